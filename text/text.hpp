// Fixed-capacity text values.
//
// A text value is a byte string of fixed capacity, padded on the right with
// blanks. Its trimmed length is the position of its last byte that is not a
// blank; a tab or a NUL at the end counts as text. Positions count from 1 in
// the public routines. Bytes are characters: nothing is multi-byte aware.
//
// Representation, used everywhere in the system:
//  - `Text<N>` owns N bytes, always blank padded, plus a mark `hi`: every byte
//    at index hi or beyond is a blank. `hi` is an upper bound of the trimmed
//    length (exact after an assignment), so scanning and re-assigning cost what
//    the text holds, not what the capacity is.
//  - `TextRef` is a mutable view of a Text<N> (bytes, capacity and mark), the
//    type of every out or in-out text argument.
//  - `std::string_view` is the type of every read-only text argument. A
//    Text<N> converts to the view of its first `hi` bytes; a literal converts
//    to itself. Routines ignore trailing blanks of a view where the text model
//    says so.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

// Trimmed length of a view: position of the last byte that is not a blank.
inline int trimmedLength(std::string_view s) {
    std::size_t n = s.size();
    while (n > 0 && s[n - 1] == ' ') --n;
    return static_cast<int>(n);
}

// The view without its trailing blanks.
inline std::string_view trimmed(std::string_view s) { return s.substr(0, static_cast<std::size_t>(trimmedLength(s))); }

// g++ 12 takes the branches of the short copies below for sizes that a
// caller's array cannot have as overruns of that array; the diagnostics are
// switched off for these routines.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Warray-bounds"
#pragma GCC diagnostic ignored "-Wstringop-overflow"
#pragma GCC diagnostic ignored "-Wstringop-overread"
#endif
// The first and the last K bytes of n (K <= n <= 2K), all loaded before any
// is stored.
template <std::size_t K>
inline void copyEnds(char* d, const char* s, std::size_t n) {
    struct Block {
        char b[K];
    };
    Block head, tail;
    std::memcpy(&head, s, K);
    std::memcpy(&tail, s + n - K, K);
    std::memcpy(d, &head, K);
    std::memcpy(d + n - K, &tail, K);
}

// Copies n bytes from s to d. Runs of up to 64 bytes, the usual line or
// field, are moved with fixed-size loads and stores that compile inline (all
// loads before the stores, so the two may overlap); longer ones go through
// memmove. A library call per short copy costs more than the copy.
inline void copyBytes(char* d, const char* s, std::size_t n) {
    if (n > 64) {
        std::memmove(d, s, n);
    } else if (n > 32) {
        copyEnds<32>(d, s, n);
    } else if (n > 16) {
        copyEnds<16>(d, s, n);
    } else if (n >= 8) {
        copyEnds<8>(d, s, n);
    } else if (n >= 4) {
        copyEnds<4>(d, s, n);
    } else if (n > 0) {
        const char a = s[0], b = s[n / 2], c = s[n - 1];
        d[0] = a;
        d[n / 2] = b;
        d[n - 1] = c;
    }
}

// Whether n bytes at a and b are the same: runs of up to 16 bytes, the usual
// field, compared in two overlapping words, longer ones through memcmp.
inline bool sameBytes(const char* a, const char* b, std::size_t n) {
    if (n > 16) return std::memcmp(a, b, n) == 0;
    uint64_t x0 = 0, x1 = 0, y0 = 0, y1 = 0;
    if (n >= 8) {
        std::memcpy(&x0, a, 8);
        std::memcpy(&x1, a + n - 8, 8);
        std::memcpy(&y0, b, 8);
        std::memcpy(&y1, b + n - 8, 8);
    } else {
        for (std::size_t i = 0; i < n; ++i) {
            x0 |= uint64_t{static_cast<unsigned char>(a[i])} << (8 * i);
            y0 |= uint64_t{static_cast<unsigned char>(b[i])} << (8 * i);
        }
    }
    return ((x0 ^ y0) | (x1 ^ y1)) == 0;
}
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif

// Sets n bytes to blanks (kept out of line: g++ 12 mistakes inlined fills of
// these fixed arrays for overruns).
void blankFill(char* p, std::size_t n);

struct TextRef {
    char* data;
    int cap;
    int* hi;

    int capacity() const { return cap; }

    // The bytes that may be non-blank (may still end in blanks).
    std::string_view view() const { return {data, static_cast<std::size_t>(*hi)}; }

    // Trimmed length and trimmed view.
    int len() const {
        int n = *hi;
        while (n > 0 && data[n - 1] == ' ') --n;
        *hi = n;  // tighten the mark while we are at it
        return n;
    }
    std::string_view trimmed() const { return {data, static_cast<std::size_t>(len())}; }

    // All blank.
    void clear() const;

    // Replace the whole value: copy the bytes, cut at the capacity, pad with
    // blanks. The source may overlap this text.
    void assign(std::string_view s) const;

    // Byte at 1-based position; a blank beyond the capacity.
    char at(int pos) const { return (pos >= 1 && pos <= cap) ? data[pos - 1] : ' '; }

    // Write a byte at 1-based position; ignored beyond the capacity.
    void set(int pos, char c) const {
        if (pos < 1 || pos > cap) return;
        data[pos - 1] = c;
        if (c != ' ' && pos > *hi) *hi = pos;
    }

    // Append behind the trimmed text, cut at the capacity. Returns false when cut.
    bool append(std::string_view s) const;

    // Declare that bytes up to index n (exclusive) may have been written
    // directly through `data`.
    void touched(int n) const {
        if (n > cap) n = cap;
        if (n > *hi) *hi = n;
    }

    operator std::string_view() const { return view(); }
};

template <int N>
struct Text {
    static_assert(N > 0, "a text needs a capacity");
    static constexpr int capacity = N;

    int hi = 0;
    char b[static_cast<std::size_t>(N)];

    Text() { blankFill(b, N); }
    Text(std::string_view s) : Text() { ref().assign(s); }
    Text(const char* s) : Text(std::string_view(s)) {}
    Text(const Text& o) : Text() { ref().assign(o.view()); }
    Text& operator=(const Text& o) {
        if (this != &o) ref().assign(o.view());
        return *this;
    }
    Text& operator=(std::string_view s) {
        ref().assign(s);
        return *this;
    }
    Text& operator=(const char* s) { return *this = std::string_view(s); }

    TextRef ref() { return TextRef{b, N, &hi}; }
    operator TextRef() { return ref(); }

    std::string_view view() const { return {b, static_cast<std::size_t>(hi)}; }
    operator std::string_view() const { return view(); }

    // All N bytes, padding included.
    std::string_view full() const { return {b, static_cast<std::size_t>(N)}; }

    int len() const { return ref_const_len(); }
    std::string_view trimmed() const { return {b, static_cast<std::size_t>(len())}; }
    bool blank() const { return len() == 0; }
    void clear() { ref().clear(); }
    char at(int pos) const { return (pos >= 1 && pos <= N) ? b[pos - 1] : ' '; }

private:
    int ref_const_len() const {
        int n = hi;
        while (n > 0 && b[n - 1] == ' ') --n;
        return n;
    }
};

// Capacities that the system uses throughout.
constexpr int kNameCap = 1000;      // file names, textLine, record lines
constexpr int kWorkCap = 100000;    // working texts of the scanners
constexpr int kMessageCap = 10000;  // a message line

using NameText = Text<kNameCap>;
