// Path handling: pure text operations on file paths, in the text model.
// Both '/' and '\' separate when a path is taken apart; a join adds '\'.
// Working texts hold 1000 bytes. Nothing here touches the disk.
#pragma once

#include <string_view>

#include "text/text.hpp"

void FILEFOLDERPATH(TextRef out, std::string_view path);   // folder with its separator
void FILENAMEEXT(TextRef out, std::string_view path);      // name and extension
void FILENAME(TextRef out, std::string_view path);         // stem
void FILEEXT(TextRef out, std::string_view path);          // extension, lower case
void FILEEXTKC(TextRef out, std::string_view path);        // extension, case kept
void FILENAMEPATH(TextRef out, std::string_view path);     // folder and stem
void FILENAMENO_(TextRef out, std::string_view path);      // stem cut before its last '_'
void FILENAMEPATHNO_(TextRef out, std::string_view path);  // folder and stem cut before last '_'
void FILE___EXT(TextRef out, std::string_view path);       // last '_' of the stem and behind, lower case
void ADDFOLDER(TextRef out, std::string_view folder, std::string_view name);
void REMOVEDOTDOT(TextRef out, std::string_view path);
// Leading blanks and doubled separators removed, in place.
void CLEANPATH(TextRef path);

// The name as the operating system takes it: blanks on both sides dropped,
// '\' turned into '/', at most 4096 bytes. One static buffer.
const char* nativePath(std::string_view name);
