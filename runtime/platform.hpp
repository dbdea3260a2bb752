// The operating-system layer: what the system expects of the platform's file
// system, command interpreter, dialogue boxes and clock, written for this
// machine. File names reach the operating system with '\' turned into '/'
// (nativePath, in paths.hpp).
#pragma once

#include <cstdint>
#include <string_view>

#include "text/text.hpp"

// The name exists and is not a folder. A blank name does not exist.
bool platformFileExists(std::string_view name);
// Modification time in whole seconds. False when it cannot be read.
bool platformModTime(std::string_view name, int64_t& seconds);
// Full path of a name. False when the platform cannot give one.
bool platformFullPath(std::string_view name, TextRef out);
// Local date for file headers.
void platformLocalDate(int& year, int& month, int& day);
// The processor cores this process may run on (at least 1).
int platformCores();

// The command interpreter's "mkdir" on a folder (parents included): 0 when it
// ran and made the folder or found it, 1 when it ran and failed, -1 only when
// the command could not be run at all.
int platformMkdir(std::string_view folder);
// The command interpreter's "copy": `from` may end in "stem.*" for every file
// of that base name; `to` is a folder or a file. Results as platformMkdir.
int platformCopy(std::string_view from, std::string_view to);

// Dialogue boxes, shown on the console on this machine: the text (a CR is a
// line break), the title, and a question for one of the buttons. At the end
// of standard input the answer is the button that ends the dialogue's loop:
// OK, Cancel where there is one, otherwise No.
enum class BoxButtons { ok, retryCancel, yesNo, yesNoCancel };
enum class BoxIcon { stop, warning, question, information };
enum class BoxAnswer { ok, cancel, retry, yes, no };
BoxAnswer platformMessageBox(std::string_view text, std::string_view title, BoxButtons buttons, BoxIcon icon);
