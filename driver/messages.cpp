#include "driver/messages.hpp"

namespace detail {
char lineTextBuffer[kLineTextCap];
}
