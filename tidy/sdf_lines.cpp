#include "tidy/sdf_lines.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iostream>

#include "runtime/console.hpp"
#include "runtime/units.hpp"

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kChunk = 1 << 20;

// The unit manager reports each open and close on the console; sdftidy's
// standard output is its report, so those lines go to /dev/null.
struct QuietConsole {
    int saved = -1;
    QuietConsole() {
        std::cout.flush();
        std::fflush(stdout);
        conFlush();
        const int null = ::open("/dev/null", O_WRONLY);
        if (null < 0) return;
        saved = ::dup(1);
        ::dup2(null, 1);
        ::close(null);
    }
    ~QuietConsole() {
        conFlush();
        if (saved < 0) return;
        ::dup2(saved, 1);
        ::close(saved);
    }
};

// A read that a signal interrupts is made again.
ssize_t readSome(int fd, char* p, std::size_t n) {
    for (;;) {
        const ssize_t got = ::read(fd, p, n);
        if (got >= 0 || errno != EINTR) return got;
    }
}

}  // namespace

std::string_view lineEnd(std::string_view raw) {
    if (raw.ends_with("\r\n")) return "\r\n";
    if (raw.ends_with("\n")) return "\n";
    return {};
}

bool checkSdfFile(const std::string& path, std::string& error) {
    std::error_code ec;
    const auto status = fs::status(path, ec);
    if (ec || !fs::exists(status)) {
        error = "cannot open " + path + ": no such file";
        return false;
    }
    if (fs::is_directory(status)) {
        error = path + " is a folder, not an SDF file";
        return false;
    }
    const int fd = ::open(path.c_str(), O_RDONLY);
    if (fd < 0) {
        error = "cannot open " + path + " for reading";
        return false;
    }
    // Lines end at LF, as the converter reads them; a CR right before the LF
    // belongs to the line end. A NUL anywhere outranks a long line.
    std::vector<char> buf(kChunk);
    int64_t total = 0, lineLength = 0, longLength = 0;
    int32_t line = 1, longLine = 0;
    bool cr = false, nul = false;
    for (;;) {
        const ssize_t got = readSome(fd, buf.data(), buf.size());
        if (got < 0) {
            ::close(fd);
            error = "cannot read " + path;
            return false;
        }
        if (got == 0) break;
        const char* p = buf.data();
        const char* const end = p + got;
        total += got;
        nul = nul || std::memchr(p, '\0', static_cast<std::size_t>(got)) != nullptr;
        while (p < end) {
            const char* nl = static_cast<const char*>(std::memchr(p, '\n', static_cast<std::size_t>(end - p)));
            const char* stop = nl ? nl : end;
            if (stop > p) {
                lineLength += stop - p;
                cr = stop[-1] == '\r';
            }
            if (nl == nullptr) break;
            const int64_t length = lineLength - (cr ? 1 : 0);
            if (longLine == 0 && length > kNameCap) {
                longLine = line;
                longLength = length;
            }
            ++line;
            lineLength = 0;
            cr = false;
            p = nl + 1;
        }
    }
    ::close(fd);
    if (longLine == 0 && lineLength > kNameCap) {  // the last line, with no line end
        longLine = line;
        longLength = lineLength;
    }
    if (total == 0) {
        error = path + " is empty: there is nothing to convert";
        return false;
    }
    if (nul) {
        error = path + " holds NUL bytes: a binary file, not an SDF text file";
        return false;
    }
    if (longLine > 0) {
        error = path + ": line " + std::to_string(longLine) + " is " + std::to_string(longLength) +
                " bytes long; the converter reads only the first " + std::to_string(kNameCap) +
                " bytes of a line, so this is no SDF file it can read";
        return false;
    }
    return true;
}

SdfReader::SdfReader(const std::string& path) : path_(path), buf_(kChunk) {
    static bool started = false;
    if (!started) {
        FILEINIT(1000);
        fileUnitSettings.pauseOnPrematureExit = false;
        started = true;
    }
    fd_ = ::open(path.c_str(), O_RDONLY);
    if (fd_ < 0) throw TidyIoError("cannot open " + path + " for reading");
    QuietConsole quiet;
    OPENERFREE(unit_, "I ", path, 0);
}

SdfReader::~SdfReader() {
    if (fd_ >= 0) ::close(fd_);
    QuietConsole quiet;
    CLOSER(unit_);
}

bool SdfReader::next(SdfLine& line) {
    const IoStatus st = unitReadLine(unit_, text_);
    if (st == IoStatus::end) return false;
    if (st == IoStatus::error) throw TidyIoError("cannot read line " + std::to_string(number_ + 1) + " of " + path_);
    const int64_t stop = unitTell(unit_);
    // The same bytes from the plain read.
    line.raw.clear();
    for (int64_t want = stop - at_; want > 0;) {
        if (pos_ == len_) {
            const ssize_t got = readSome(fd_, buf_.data(), buf_.size());
            if (got <= 0) throw TidyIoError("cannot read line " + std::to_string(number_ + 1) + " of " + path_);
            pos_ = 0;
            len_ = static_cast<std::size_t>(got);
        }
        const std::size_t n = std::min(len_ - pos_, static_cast<std::size_t>(want));
        line.raw.append(buf_.data() + pos_, n);
        pos_ += n;
        want -= static_cast<int64_t>(n);
    }
    at_ = stop;
    line.seen.assign(text_.trimmed());
    line.number = ++number_;
    if (!eolSeen_ && !lineEnd(line.raw).empty()) {
        eol_ = lineEnd(line.raw);
        eolSeen_ = true;
    }
    return true;
}

CopyWriter::~CopyWriter() {
    if (fd_ < 0) return;
    ::close(fd_);
    if (!temp_.empty()) ::unlink(temp_.c_str());
}

bool CopyWriter::open(const std::string& path, std::string& error) {
    path_ = path;
    buf_.resize(kChunk);
    error = "cannot write " + path;
    struct stat st {};
    const bool exists = ::stat(path.c_str(), &st) == 0;
    // A device or a pipe (-o /dev/stdout) is written to directly.
    if (exists && !S_ISREG(st.st_mode)) {
        fd_ = ::open(path.c_str(), O_WRONLY | O_TRUNC);
        return fd_ >= 0;
    }
    // A file is written beside the file that the name leads to (through a
    // link, too) and renamed onto it; it keeps that file's permissions, or
    // gets those of a new file.
    std::error_code ec;
    const fs::path target = exists ? fs::canonical(path, ec) : fs::path(path);
    if (ec) return false;
    const fs::path dir = target.has_parent_path() ? target.parent_path() : fs::path(".");
    std::string name = target.filename().string();
    name.insert(name.begin(), '.');
    name += ".sdftidy-XXXXXX";
    temp_ = (dir / name).string();
    target_ = target.string();
    fd_ = ::mkstemp(temp_.data());
    if (fd_ < 0) {
        temp_.clear();
        return false;
    }
    mode_t mode = st.st_mode & 07777;
    if (!exists) {
        const mode_t mask = ::umask(0);
        ::umask(mask);
        mode = 0666 & ~mask;
    }
    ::fchmod(fd_, mode);
    error.clear();
    return true;
}

void CopyWriter::put(std::string_view s) {
    if (len_ + s.size() > buf_.size()) flush();
    if (s.size() > buf_.size()) buf_.resize(s.size());
    std::memcpy(buf_.data() + len_, s.data(), s.size());
    len_ += s.size();
}

void CopyWriter::flush() {
    for (std::size_t done = 0; done < len_;) {
        const ssize_t n = ::write(fd_, buf_.data() + done, len_ - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) throw TidyIoError("cannot write " + path_);
        done += static_cast<std::size_t>(n);
    }
    len_ = 0;
}

void CopyWriter::write(const SdfLine& line, std::string_view eol) {
    put(owed_);
    put(line.raw);
    owed_ = lineEnd(line.raw).empty() ? eol : std::string_view();
}

bool CopyWriter::commit(std::string& error) {
    try {
        flush();
    } catch (const TidyIoError& e) {
        error = e.what();
        return false;
    }
    const int fd = fd_;
    fd_ = -1;
    const bool closed = ::close(fd) == 0;
    if (temp_.empty()) {
        if (!closed) error = "cannot write " + path_;
        return closed;
    }
    if (!closed || std::rename(temp_.c_str(), target_.c_str()) != 0) {
        ::unlink(temp_.c_str());
        error = "cannot write " + path_;
        return false;
    }
    return true;
}
