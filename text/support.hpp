// Who a message sends the user to when the program meets a state it should
// never reach. Adjacent to the message's own literal, so that the whole
// message stays one compile-time text.
#pragma once

#define REACHMAP_SUPPORT "the reachmap maintainers"
