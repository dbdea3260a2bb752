// An SDF file read forward one line at a time, each line both as the
// converter reads it and as its bytes stand in the file, and the repaired
// copy written out as it is produced. Nothing here holds more than a line at
// a time, so memory does not grow with the file.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "text/text.hpp"

struct SdfLine {
    std::string seen;    // what the converter's line reading gives, trailing blanks cut
    std::string raw;     // the bytes in the file, line end included
    int32_t number = 0;  // line number in the input; 0 for a line that a repair adds
};

// A read or a write that fails part-way through a file.
struct TidyIoError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Whether `path` can be checked at all, found before anything is reported.
// False, with a one-line `error`, for no such file, a folder, an empty or
// unreadable file, a binary file, or a line longer than the converter reads.
// One pass over the bytes; nothing is kept.
bool checkSdfFile(const std::string& path, std::string& error);

// The lines of a file, split by the converter's own reading of a unit so
// that line numbers and contents are the ones it sees; the bytes of each line
// come from a second, plain read of the same file. Throws TidyIoError when a
// read fails.
class SdfReader {
public:
    explicit SdfReader(const std::string& path);
    ~SdfReader();
    SdfReader(const SdfReader&) = delete;
    SdfReader& operator=(const SdfReader&) = delete;

    // The next line into `line`, reusing its storage; false at the end.
    bool next(SdfLine& line);
    // The file's first line end, for lines that a repair adds; LF until one is read.
    std::string_view eol() const { return eol_; }

private:
    std::string path_;
    int32_t unit_ = 0;
    int fd_ = -1;
    std::vector<char> buf_;
    std::size_t pos_ = 0, len_ = 0;
    int64_t at_ = 0;  // offset of the next line
    int32_t number_ = 0;
    Text<kNameCap> text_;
    std::string_view eol_ = "\n";
    bool eolSeen_ = false;
};

// The repaired copy, written through a buffer to a temporary file beside its
// final name and renamed to it by commit(); a run that fails before that
// leaves no half-written copy under the final name. A device or a pipe is
// written directly. Throws TidyIoError when a
// write fails.
class CopyWriter {
public:
    CopyWriter() = default;
    ~CopyWriter();
    CopyWriter(const CopyWriter&) = delete;
    CopyWriter& operator=(const CopyWriter&) = delete;

    bool open(const std::string& path, std::string& error);
    // Writes the line's bytes. A line without a line end (the file's last,
    // which a repair moved up) gets `eol` when another line follows it.
    void write(const SdfLine& line, std::string_view eol);
    bool commit(std::string& error);

private:
    void put(std::string_view s);
    void flush();
    std::string path_;    // the name given
    std::string target_;  // the file it leads to
    std::string temp_;    // the temporary file beside it; empty when written directly
    int fd_ = -1;
    std::vector<char> buf_;
    std::size_t len_ = 0;
    std::string owed_;  // a line end still owed to the last line written
};

// The line end of `raw`: CR LF, LF, or nothing.
std::string_view lineEnd(std::string_view raw);
