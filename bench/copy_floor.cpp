// The I/O floor of a conversion: the least work any program must do to read
// the input once and leave the same output bytes on disk.
//
//     copy_floor [--take] INPUT REFERENCE_DIR DEST_DIR
//
// First, untimed, it loads every regular file of REFERENCE_DIR (the output
// of one conversion) into memory. Then, timed, it reads INPUT once with
// 1 MiB reads and writes each loaded file into DEST_DIR (open with
// O_CREAT | O_TRUNC | O_WRONLY, 1 MiB writes, close), in name order. It
// --take deletes each reference file once it is loaded, before the timed
// part: the files the floor writes then find memory as the converter's run
// found it, freed by the run before, and not taken afresh from a machine
// that backs fresh memory slowly (a virtual machine's host does). It
// prints the timed part's wall, user and system time on standard error, so a
// timer of the whole process can tell the preload apart:
//
//     timed wall 0.123456 user 0.001000 sys 0.120000 s; read N bytes, wrote M bytes in K files
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

namespace {

constexpr size_t chunk = size_t{1} << 20;

struct File {
    std::string name;
    std::vector<char> bytes;
};

[[noreturn]] void fail(const std::string& what) {
    std::fprintf(stderr, "copy_floor: %s: %s\n", what.c_str(), std::strerror(errno));
    std::exit(1);
}

std::vector<File> preload(const std::filesystem::path& dir, bool take) {
    // The names first: files are deleted on the way with --take.
    std::vector<std::filesystem::path> names;
    for (const auto& e : std::filesystem::directory_iterator(dir))
        if (e.is_regular_file()) names.push_back(e.path());
    std::vector<File> files;
    for (const auto& path : names) {
        File f{path.filename().string(), {}};
        f.bytes.resize(static_cast<size_t>(std::filesystem::file_size(path)));
        int fd = ::open(path.c_str(), O_RDONLY);
        if (fd < 0) fail(path.string());
        size_t got = 0;
        while (got < f.bytes.size()) {
            ssize_t n = ::read(fd, f.bytes.data() + got, f.bytes.size() - got);
            if (n < 0) fail(path.string());
            if (n == 0) break;
            got += static_cast<size_t>(n);
        }
        f.bytes.resize(got);
        ::close(fd);
        if (take && ::unlink(path.c_str()) != 0) fail(path.string());
        files.push_back(std::move(f));
    }
    std::sort(files.begin(), files.end(), [](const File& a, const File& b) { return a.name < b.name; });
    return files;
}

double seconds(const timeval& t) { return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) * 1e-6; }

}  // namespace

int main(int argc, char** argv) {
    const bool take = argc == 5 && std::strcmp(argv[1], "--take") == 0;
    if (argc != 4 + (take ? 1 : 0)) {
        std::fprintf(stderr, "usage: copy_floor [--take] INPUT REFERENCE_DIR DEST_DIR\n");
        return 2;
    }
    char** args = argv + (take ? 1 : 0);
    const std::string input = args[1];
    const std::filesystem::path dest = args[3];
    std::vector<File> files = preload(args[2], take);
    std::filesystem::create_directories(dest);
    std::vector<std::string> paths;
    for (const auto& f : files) paths.push_back((dest / f.name).string());
    std::vector<char> buffer(chunk);

    rusage r0{}, r1{};
    ::getrusage(RUSAGE_SELF, &r0);
    const auto t0 = std::chrono::steady_clock::now();

    size_t read_bytes = 0;
    int in = ::open(input.c_str(), O_RDONLY);
    if (in < 0) fail(input);
    for (;;) {
        ssize_t n = ::read(in, buffer.data(), chunk);
        if (n < 0) fail(input);
        if (n == 0) break;
        read_bytes += static_cast<size_t>(n);
    }
    ::close(in);

    size_t written = 0;
    for (size_t i = 0; i < files.size(); ++i) {
        int fd = ::open(paths[i].c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0644);
        if (fd < 0) fail(paths[i]);
        const std::vector<char>& b = files[i].bytes;
        for (size_t at = 0; at < b.size();) {
            ssize_t n = ::write(fd, b.data() + at, std::min(chunk, b.size() - at));
            if (n < 0) fail(paths[i]);
            at += static_cast<size_t>(n);
        }
        written += b.size();
        if (::close(fd) != 0) fail(paths[i]);
    }

    const auto t1 = std::chrono::steady_clock::now();
    ::getrusage(RUSAGE_SELF, &r1);
    std::fprintf(stderr, "timed wall %.6f user %.6f sys %.6f s; read %zu bytes, wrote %zu bytes in %zu files\n",
                 std::chrono::duration<double>(t1 - t0).count(), seconds(r1.ru_utime) - seconds(r0.ru_utime),
                 seconds(r1.ru_stime) - seconds(r0.ru_stime), read_bytes, written, files.size());
    return 0;
}
