// Running the converter as a child process in a scratch folder, and the
// byte helpers that the end-to-end tests build their expectations with.
#pragma once

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace e2e {

namespace fs = std::filesystem;

struct RunResult {
    int status = -1;
    std::string out;  // standard output
    std::string err;  // standard error
};

inline std::string readFile(const fs::path& p) {
    std::ifstream f(p, std::ios::binary);
    std::ostringstream s;
    s << f.rdbuf();
    return s.str();
}

inline void writeFile(const fs::path& p, const std::string& s) {
    std::ofstream f(p, std::ios::binary);
    f << s;
}

// Lines joined with CR LF, the way the SDF samples and our outputs end lines.
inline std::string crlf(std::initializer_list<std::string> lines) {
    std::string s;
    for (const auto& l : lines) s += l + "\r\n";
    return s;
}

inline std::string quote(const std::string& s) {
    std::string q = "'";
    for (char c : s) {
        if (c == '\'')
            q += "'\\''";
        else
            q += c;
    }
    return q + "'";
}

// A fresh folder for one test under the build tree.
inline fs::path scratch(const std::string& name) {
    fs::path d = fs::path(REACHMAP_BINARY_DIR) / "e2e-scratch" / name;
    fs::remove_all(d);
    fs::create_directories(d);
    return d;
}

// Runs reachmap in `dir` with `args`; standard input is `input` (empty: closed
// at once, as with no person at the console). With `seconds` above 0 a run
// that takes longer is killed (status 124).
inline RunResult reachmap(const fs::path& dir, const std::vector<std::string>& args, const std::string& input = "",
                          int seconds = 0) {
    writeFile(dir / ".stdin", input);
    std::string cmd = "cd " + quote(dir.string()) + " && " + (seconds > 0 ? "timeout " + std::to_string(seconds) + " " : "") +
                      quote(REACHMAP_EXE);
    for (const auto& a : args) cmd += " " + quote(a);
    cmd += " < .stdin > .stdout 2> .stderr";
    RunResult r;
    int rc = std::system(cmd.c_str());
    r.status = WIFEXITED(rc) ? WEXITSTATUS(rc) : -1;
    r.out = readFile(dir / ".stdout");
    r.err = readFile(dir / ".stderr");
    return r;
}

// The lines of a text split at LF (a CR stays with its line).
inline std::vector<std::string> lines(const std::string& s) {
    std::vector<std::string> v(1);
    for (char c : s) {
        if (c == '\n')
            v.emplace_back();
        else
            v.back() += c;
    }
    return v;
}

// True when each of `want` occurs as a whole line of `out`, in this order.
inline bool linesInOrder(const std::string& out, const std::vector<std::string>& want) {
    auto all = lines(out);
    std::size_t k = 0;
    for (const auto& l : all)
        if (k < want.size() && l == want[k]) ++k;
    return k == want.size();
}

inline int countLine(const std::string& out, const std::string& line) {
    int n = 0;
    for (const auto& l : lines(out))
        if (l == line) ++n;
    return n;
}

// Builds binary expectations.
struct Bytes {
    std::string b;
    Bytes& be32(int32_t v) {
        auto u = static_cast<uint32_t>(v);
        for (int s = 24; s >= 0; s -= 8) b += static_cast<char>((u >> s) & 0xFF);
        return *this;
    }
    Bytes& le32(int32_t v) {
        auto u = static_cast<uint32_t>(v);
        for (int s = 0; s <= 24; s += 8) b += static_cast<char>((u >> s) & 0xFF);
        return *this;
    }
    Bytes& le16(int v) {
        b += static_cast<char>(v & 0xFF);
        b += static_cast<char>((v >> 8) & 0xFF);
        return *this;
    }
    Bytes& le64(double d) {
        uint64_t u;
        std::memcpy(&u, &d, 8);
        for (int s = 0; s <= 56; s += 8) b += static_cast<char>((u >> s) & 0xFF);
        return *this;
    }
    Bytes& byte(int v) {
        b += static_cast<char>(v);
        return *this;
    }
    Bytes& zeros(int n) {
        b.append(static_cast<std::size_t>(n), '\0');
        return *this;
    }
    Bytes& padded(const std::string& s, int width, char pad = ' ', bool right = false) {
        std::string v = s.substr(0, static_cast<std::size_t>(width));
        std::string fill(static_cast<std::size_t>(width) - v.size(), pad);
        b += right ? fill + v : v + fill;
        return *this;
    }
};

// The 100-byte header of a .shp or .shx.
inline std::string shpHeader(int32_t lengthWords, int32_t type, double xmin, double ymin, double xmax, double ymax) {
    Bytes h;
    h.be32(9994).zeros(20).be32(lengthWords).le32(1000).le32(type);
    h.le64(xmin).le64(ymin).le64(xmax).le64(ymax).zeros(32);
    return h.b;
}

struct Field {
    std::string name;
    char type;
    int width;
    int decimals;
};

// A .dbf header, with the three date bytes as zeros (tests blank them in the file).
inline std::string dbfHeader(int32_t records, const std::vector<Field>& fields) {
    int reclen = 1;
    for (const auto& f : fields) reclen += f.width;
    Bytes h;
    h.byte(3).zeros(3).le32(records).le16(32 * static_cast<int>(fields.size()) + 33).le16(reclen).zeros(20);
    for (const auto& f : fields) {
        h.padded(f.name, 11, '\0').byte(f.type).zeros(4).byte(f.width).byte(f.decimals).zeros(14);
    }
    h.byte(13);
    return h.b;
}

inline std::string withoutDate(std::string dbf) {
    if (dbf.size() >= 4) dbf[1] = dbf[2] = dbf[3] = 0;
    return dbf;
}

}  // namespace e2e
