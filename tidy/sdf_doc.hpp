// An SDF file held in memory, line by line, both as the converter reads each
// line and as its bytes stand in the file, so that a repaired copy can keep
// every byte that no repair touches.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

struct SdfLine {
    std::string_view seen;  // what the converter's line reading gives, trailing blanks cut
    std::string_view raw;   // the bytes in the file, line end included
    int32_t number = 0;     // line number in the input; 0 for a line that a repair adds
};

struct SdfDoc {
    std::string bytes;  // the whole file
    std::string seen;   // storage of every line's `seen`
    std::vector<SdfLine> lines;
    std::string_view eol = "\n";  // the file's first line end, for lines that a repair adds
};

// Reads `path` through the converter's own line reading. False, with a
// one-line `error`, for what cannot be checked: no such file, a folder, an
// empty or unreadable file, a binary file, or a line longer than the
// converter reads.
bool loadSdf(const std::string& path, SdfDoc& doc, std::string& error);

// The line end of `raw`: CR LF, LF, or nothing.
std::string_view lineEnd(std::string_view raw);
