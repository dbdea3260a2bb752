// The number readers against the C library: every token that parseReal8,
// parseReal4 or parseInt8 takes must give the value that strtod, strtof or
// strtoll gives for it (in their spelling), bit for bit; a token that they
// refuse must be one that the readers refuse on purpose. The list reader
// then runs over the whole input.
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "text/freeformat.hpp"

namespace {

[[noreturn]] void mismatch(const char* what, const std::string& token) {
    std::fprintf(stderr, "%s disagrees on token [%s]\n", what, token.c_str());
    std::abort();
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// The token in the spelling of strtod, when it has the form of a number of
// the list rules ([sign] digits [. digits] [exponent], the exponent a letter
// e, d or q in either case with an optional sign, or a bare sign); empty
// otherwise.
std::string cSpelling(std::string_view t) {
    std::string c;
    std::size_t i = 0;
    if (i < t.size() && (t[i] == '+' || t[i] == '-')) c += t[i++];
    bool digits = false, point = false;
    for (; i < t.size(); ++i) {
        if (isDigit(t[i])) digits = true;
        else if (t[i] == '.' && !point) point = true;
        else break;
        c += t[i];
    }
    if (!digits) return {};
    if (i == t.size()) return c;
    const char e = t[i];
    if (std::strchr("eEdDqQ", e) != nullptr) ++i;
    else if (e != '+' && e != '-') return {};
    c += 'e';
    if (i < t.size() && (t[i] == '+' || t[i] == '-')) c += t[i++];
    if (i == t.size()) return {};  // an exponent needs a digit
    for (; i < t.size(); ++i) {
        if (!isDigit(t[i])) return {};
        c += t[i];
    }
    return c;
}

template <typename F, typename Parse, typename Strto>
void compareReal(const std::string& token, Parse parse, Strto strto, const char* what) {
    F mine = 0;
    const bool took = parse(token, mine);
    const std::string c = cSpelling(token);
    if (c.empty()) {
        if (took) mismatch(what, token);  // took a token of no number form
        return;
    }
    errno = 0;
    char* end = nullptr;
    const F theirs = strto(c.c_str(), &end);
    const bool whole = end == c.c_str() + c.size();
    if (!whole) mismatch(what, token);
    // Values out of range (and those that round to 0 or a denormal) are
    // refused by the readers: no level or coordinate can become one.
    if (errno == ERANGE || !std::isfinite(theirs)) {
        if (took && !(mine == theirs && std::isfinite(mine))) mismatch(what, token);
        return;
    }
    if (!took || std::memcmp(&mine, &theirs, sizeof(F)) != 0) {
        // 0 and -0 are one value to a reader of levels.
        if (!(took && mine == 0 && theirs == 0)) mismatch(what, token);
    }
}

void compareInt(const std::string& token) {
    int64_t mine = 0;
    const bool took = parseInt8(token, mine);
    bool form = !token.empty();
    std::size_t i = !token.empty() && (token[0] == '+' || token[0] == '-') ? 1 : 0;
    if (i == token.size()) form = false;
    for (; i < token.size(); ++i)
        if (!isDigit(token[i])) form = false;
    if (!form) {
        if (took) mismatch("parseInt8", token);
        return;
    }
    errno = 0;
    const long long theirs = std::strtoll(token.c_str(), nullptr, 10);
    if (errno == ERANGE) {
        if (took) mismatch("parseInt8", token);
    } else if (!took || mine != theirs) {
        mismatch("parseInt8", token);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    const std::string_view in(reinterpret_cast<const char*>(data), size);
    // Each token of the input: bytes up to a blank, tab, comma, slash or line end.
    std::size_t start = 0;
    for (std::size_t i = 0; i <= in.size(); ++i) {
        if (i < in.size() && std::strchr(" \t,/\r\n", in[i]) == nullptr && in[i] != '\0') continue;
        if (i > start && i - start < 1000) {
            const std::string token(in.substr(start, i - start));
            compareReal<double>(
                token, parseReal8, [](const char* s, char** e) { return std::strtod(s, e); }, "parseReal8");
            compareReal<float>(
                token, parseReal4, [](const char* s, char** e) { return std::strtof(s, e); }, "parseReal4");
            compareInt(token);
        }
        start = i + 1;
    }
    // The list reader over the whole input, every kind in turn.
    FreeFormat ff(in);
    for (int k = 0; k < 10000; ++k) {
        double d;
        float f;
        int32_t n;
        Text<100> t;
        ReadResult r = k % 4 == 0 ? ff.real8(d) : k % 4 == 1 ? ff.real4(f) : k % 4 == 2 ? ff.int4(n) : ff.text(t);
        if (r == ReadResult::end) break;
    }
    return 0;
}
