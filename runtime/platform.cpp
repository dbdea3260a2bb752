#include "runtime/platform.hpp"

#include <sched.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "runtime/console.hpp"
#include "runtime/paths.hpp"
#include "text/linebuf.hpp"

namespace fs = std::filesystem;

namespace {

std::string nativeString(std::string_view name) { return std::string(nativePath(name)); }

}  // namespace

int platformCores() {
    cpu_set_t set;
    CPU_ZERO(&set);
    if (::sched_getaffinity(0, sizeof set, &set) != 0) return 1;
    const int n = CPU_COUNT(&set);
    return n > 0 ? n : 1;
}

bool platformFileExists(std::string_view name) {
    const char* p = nativePath(name);
    if (*p == '\0') return false;
    struct stat st;
    if (::stat(p, &st) != 0) return false;
    return !S_ISDIR(st.st_mode);
}

bool platformModTime(std::string_view name, int64_t& seconds) {
    const char* p = nativePath(name);
    struct stat st;
    if (*p == '\0' || ::stat(p, &st) != 0) return false;
    seconds = static_cast<int64_t>(st.st_mtime);
    return true;
}

bool platformFullPath(std::string_view name, TextRef out) {
    std::string p = nativeString(name);
    if (p.empty()) return false;
    char resolved[PATH_MAX];
    if (::realpath(p.c_str(), resolved) != nullptr) {
        out.assign(resolved);
        return true;
    }
    // A file that does not exist yet: the full path of its folder and the name.
    std::string folder = ".";
    std::string leaf = p;
    std::size_t slash = p.find_last_of('/');
    if (slash != std::string::npos) {
        folder = slash == 0 ? "/" : p.substr(0, slash);
        leaf = p.substr(slash + 1);
    }
    if (leaf.empty() || ::realpath(folder.c_str(), resolved) == nullptr) return false;
    std::string full(resolved);
    if (full.empty() || full.back() != '/') full += '/';
    full += leaf;
    out.assign(full);
    return true;
}

void platformLocalDate(int& year, int& month, int& day) {
    std::time_t now = std::time(nullptr);
    std::tm tm{};
    ::localtime_r(&now, &tm);
    year = tm.tm_year + 1900;
    month = tm.tm_mon + 1;
    day = tm.tm_mday;
}

int platformMkdir(std::string_view folder) {
    std::string p = nativeString(folder);
    if (p.empty()) return 0;  // the current folder is always there
    std::error_code ec;
    fs::create_directories(p, ec);
    return fs::is_directory(p, ec) ? 0 : 1;
}

int platformCopy(std::string_view from, std::string_view to) {
    std::string src = nativeString(from);
    std::string dst = nativeString(to);
    if (src.empty() || dst.empty()) return 1;
    std::error_code ec;
    std::vector<fs::path> sources;
    fs::path sp(src);
    std::string leaf = sp.filename().string();
    if (leaf.size() >= 2 && leaf.compare(leaf.size() - 2, 2, ".*") == 0) {
        // "stem.*": the file named stem and every file stem.<anything>.
        std::string stem = leaf.substr(0, leaf.size() - 2);
        fs::path dir = sp.parent_path();
        if (dir.empty()) dir = ".";
        for (fs::directory_iterator it(dir, ec), end; !ec && it != end; it.increment(ec)) {
            if (!it->is_regular_file(ec)) continue;
            std::string n = it->path().filename().string();
            if (n == stem || (n.size() > stem.size() && n.compare(0, stem.size(), stem) == 0 && n[stem.size()] == '.'))
                sources.push_back(it->path());
        }
    } else if (fs::is_regular_file(sp, ec)) {
        sources.push_back(sp);
    }
    if (sources.empty()) return 1;  // nothing matched: the copy fails
    bool toFolder = dst.back() == '/' || fs::is_directory(dst, ec);
    bool failed = false;
    for (const fs::path& s : sources) {
        fs::path target = toFolder ? fs::path(dst) / s.filename() : fs::path(dst);
        std::error_code cec;
        fs::copy_file(s, target, fs::copy_options::overwrite_existing, cec);
        if (cec) failed = true;
    }
    return failed ? 1 : 0;
}

BoxAnswer platformMessageBox(std::string_view text, std::string_view title, BoxButtons buttons, BoxIcon icon) {
    static const char* const iconWord[] = {"STOP", "WARNING", "QUESTION", "INFORMATION"};
    LineBuf<300> head;
    head << "[" << iconWord[static_cast<int>(icon)] << "] " << trimmed(title);
    conBlank();
    conLine(head.view());
    // A carriage return is a line break of the dialogue text.
    std::string_view rest = text;
    for (;;) {
        std::size_t cr = rest.find('\r');
        conLine(trimmed(rest.substr(0, cr)));
        if (cr == std::string_view::npos) break;
        rest.remove_prefix(cr + 1);
    }
    const char* question = "Press Enter for OK: ";
    const char* onEnd = nullptr;  // the loop-ending answer, said when input has ended
    BoxAnswer endAnswer = BoxAnswer::ok;
    switch (buttons) {
        case BoxButtons::ok: break;
        case BoxButtons::retryCancel:
            question = "Retry or Cancel? (R/C): ";
            onEnd = "Cancel";
            endAnswer = BoxAnswer::cancel;
            break;
        case BoxButtons::yesNo:
            question = "Yes or No? (Y/N): ";
            onEnd = "No";
            endAnswer = BoxAnswer::no;
            break;
        case BoxButtons::yesNoCancel:
            question = "Yes, No or Cancel? (Y/N/C): ";
            onEnd = "Cancel";
            endAnswer = BoxAnswer::cancel;
            break;
    }
    static Text<100> line;
    for (;;) {
        conWrite(question);
        if (!conReadLine(line)) {
            if (onEnd != nullptr) {
                LineBuf<200> msg;
                msg << "ERROR - End of standard input while waiting for an answer; taken as " << onEnd << ".";
                conBlank();
                conLine(msg.view());
            }
            return endAnswer;
        }
        if (buttons == BoxButtons::ok) return BoxAnswer::ok;
        std::string_view a = line.view();
        std::size_t first = a.find_first_not_of(' ');
        char c = first == std::string_view::npos ? ' ' : a[first];
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 32);
        switch (buttons) {
            case BoxButtons::retryCancel:
                if (c == 'R') return BoxAnswer::retry;
                if (c == 'C') return BoxAnswer::cancel;
                break;
            case BoxButtons::yesNo:
                if (c == 'Y') return BoxAnswer::yes;
                if (c == 'N') return BoxAnswer::no;
                break;
            case BoxButtons::yesNoCancel:
                if (c == 'Y') return BoxAnswer::yes;
                if (c == 'N') return BoxAnswer::no;
                if (c == 'C') return BoxAnswer::cancel;
                break;
            case BoxButtons::ok: break;
        }
    }
}
