#include "runtime/paths.hpp"

#include <cstring>

#include "text/strings.hpp"

namespace {

constexpr int kPathCap = 1000;

inline bool isSep(char c) { return c == '/' || c == '\\'; }

// 1-based position of the last `c` in `p`, 0 when absent.
int lastOf(std::string_view p, char c) {
    for (std::size_t i = p.size(); i > 0; --i)
        if (p[i - 1] == c) return static_cast<int>(i);
    return 0;
}

int lastSep(std::string_view p) {
    for (std::size_t i = p.size(); i > 0; --i)
        if (isSep(p[i - 1])) return static_cast<int>(i);
    return 0;
}

// Bytes a..b (1-based, inclusive) of p; empty when b < a.
std::string_view part(std::string_view p, int a, int b) {
    if (b < a) return {};
    return p.substr(static_cast<std::size_t>(a - 1), static_cast<std::size_t>(b - a + 1));
}

std::string_view dropLeadingBlanks(std::string_view s) {
    std::size_t a = 0;
    while (a < s.size() && s[a] == ' ') ++a;
    return s.substr(a);
}

// The stem of a path with no separator, `mark` playing the part of the dot.
std::string_view stemBefore(std::string_view p, char mark) {
    int d = lastOf(p, mark);
    if (d >= 2) return part(p, 1, d - 1);
    if (d == 1) return {};
    return p;
}

std::string_view stemOf(std::string_view path) {
    std::string_view p = trimmed(path);
    int s = lastSep(p);
    if (s == 0) return stemBefore(p, '.');
    int d = lastOf(p, '.');
    // A dot right behind the separator starts no extension (a hidden file).
    if (d <= s + 1) d = static_cast<int>(p.size()) + 1;
    return part(p, s + 1, d - 1);
}

std::string_view nameAndFolderOf(std::string_view path) {
    std::string_view p = trimmed(path);
    int d = lastOf(p, '.');
    int s = lastSep(p);
    if (d > 1 && d > s) return part(p, 1, d - 1);
    return p;
}

std::string_view extensionOf(std::string_view path) {
    std::string_view p = trimmed(path);
    int d = lastOf(p, '.');
    if (d > 0 && d > lastSep(p)) return part(p, d, static_cast<int>(p.size()));
    return {};
}

// A working path of at most 1000 bytes that bytes can be cut out of.
struct Work {
    char b[kPathCap];
    int n = 0;

    void set(std::string_view s) {
        n = static_cast<int>(s.size() < kPathCap ? s.size() : kPathCap);
        std::memcpy(b, s.data(), static_cast<std::size_t>(n));
    }
    void add(std::string_view s) {
        std::size_t k =
            s.size() < static_cast<std::size_t>(kPathCap - n) ? s.size() : static_cast<std::size_t>(kPathCap - n);
        std::memcpy(b + n, s.data(), k);
        n += static_cast<int>(k);
    }
    // 0-based index of `needle` from `from`, -1 when absent.
    int find(std::string_view needle, int from = 0) const {
        std::string_view v(b, static_cast<std::size_t>(n));
        std::size_t r = v.find(needle, static_cast<std::size_t>(from));
        return r == std::string_view::npos ? -1 : static_cast<int>(r);
    }
    void erase(int at, int count) {
        std::memmove(b + at, b + at + count, static_cast<std::size_t>(n - at - count));
        n -= count;
    }
    std::string_view view() const { return {b, static_cast<std::size_t>(n)}; }
};

// The three tidying steps, on '\' only.
void tidy(Work& w) {
    // Doubled backslashes collapse, except one at position 1 or 2 (a network
    // path), which also ends this step.
    for (;;) {
        int p = w.find("\\\\");
        if (p < 2) break;
        w.erase(p + 1, 1);
    }
    // Each "\..\" takes the folder before it along, except where leading
    // "..\" parts have nothing left to cancel.
    for (;;) {
        int p = w.find("\\..\\");
        if (p < 1) break;
        bool done = false;
        while (p >= 2 && w.b[p - 2] == '.' && w.b[p - 1] == '.') {
            int next = w.find("\\..\\", p + 1);
            if (next < 0) {
                done = true;
                break;
            }
            p = next;
        }
        if (done) break;
        int q = p - 1;
        while (q >= 0 && w.b[q] != '\\') --q;
        w.erase(q + 1, p + 4 - (q + 1));
    }
    for (;;) {
        int p = w.find("\\.\\");
        if (p < 0) break;
        w.erase(p + 1, 2);
    }
}

Work work;

}  // namespace

void FILEFOLDERPATH(TextRef out, std::string_view path) {
    std::string_view p = trimmed(path);
    out.assign(part(p, 1, lastSep(p)));
}

void FILENAMEEXT(TextRef out, std::string_view path) {
    std::string_view p = trimmed(path);
    out.assign(p.substr(static_cast<std::size_t>(lastSep(p))));
}

void FILENAME(TextRef out, std::string_view path) { out.assign(stemOf(path)); }

void FILEEXT(TextRef out, std::string_view path) { LOWERCASE(out, extensionOf(path)); }

void FILEEXTKC(TextRef out, std::string_view path) { out.assign(extensionOf(path)); }

void FILENAMEPATH(TextRef out, std::string_view path) { out.assign(nameAndFolderOf(path)); }

void FILENAMENO_(TextRef out, std::string_view path) { out.assign(stemBefore(stemOf(path), '_')); }

void FILENAMEPATHNO_(TextRef out, std::string_view path) {
    std::string_view p = nameAndFolderOf(path);
    int u = lastOf(p, '_');
    if (u > 1 && u > lastSep(p)) p = part(p, 1, u - 1);
    out.assign(p);
}

void FILE___EXT(TextRef out, std::string_view path) {
    std::string_view stem = stemOf(path);
    int u = lastOf(stem, '_');
    if (u == 0) {
        out.clear();
        return;
    }
    LOWERCASE(out, part(stem, u, static_cast<int>(stem.size())));
}

void ADDFOLDER(TextRef out, std::string_view folder, std::string_view name) {
    std::string_view f = trimmed(dropLeadingBlanks(folder));
    std::string_view n = trimmed(dropLeadingBlanks(name));
    // Whichever way the result is made, it is tidied the same way.
    if (n.empty()) {
        work.set(f.empty() ? std::string_view(".") : f);
    } else if (f.empty() || n.find(':') != std::string_view::npos || n.find("\\\\") != std::string_view::npos) {
        work.set(n);
    } else {
        work.set(f);
        if (!isSep(f.back())) work.add("\\");
        work.add(n);
    }
    tidy(work);
    out.assign(work.view());
}

void REMOVEDOTDOT(TextRef out, std::string_view path) {
    work.set(trimmed(dropLeadingBlanks(path)));
    tidy(work);
    out.assign(work.view());
}

void CLEANPATH(TextRef path) {
    // Drop the leading blanks, then collapse every doubled separator. A double
    // at position 1 starts a network path and stays; any further separator of
    // the same kind behind it still collapses, so that "\\\a" becomes "\\a".
    std::string_view p = dropLeadingBlanks(path.trimmed());
    work.set(p);
    int w = 0;
    for (int i = 0; i < work.n; ++i) {
        char c = work.b[i];
        if (i >= 2 && isSep(c) && work.b[i - 1] == c) continue;
        work.b[w++] = c;
    }
    work.n = w;
    path.assign(work.view());
}

const char* nativePath(std::string_view name) {
    constexpr std::size_t kNativeCap = 4096;
    static char native[kNativeCap + 1];
    std::size_t a = 0;
    while (a < name.size() && name[a] == ' ') ++a;
    std::size_t b = name.size();
    while (b > a && name[b - 1] == ' ') --b;
    std::size_t n = b - a < kNativeCap ? b - a : kNativeCap;
    for (std::size_t i = 0; i < n; ++i) native[i] = name[a + i] == '\\' ? '/' : name[a + i];
    native[n] = '\0';
    return native;
}
