// Pieces shared by the runtime's own sources; not for other subsystems.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "text/numbers.hpp"

// Closes every open file unit (slots first, then the pool) without a report,
// ignoring errors and leaving the opened flags alone. Used by EXITS.
void unitCloseAllQuietly();

// A line built from pieces in fixed storage, cut at its capacity.
template <std::size_t N>
struct LineBuf {
    char b[N];
    std::size_t n = 0;

    LineBuf& operator<<(std::string_view s) {
        std::size_t k = s.size() < N - n ? s.size() : N - n;
        if (k > 0) std::memcpy(b + n, s.data(), k);
        n += k;
        return *this;
    }
    LineBuf& operator<<(char c) {
        if (n < N) b[n++] = c;
        return *this;
    }
    // Integer right-justified in `width` bytes.
    LineBuf& put(int width, int64_t v) {
        char t[64];
        return *this << std::string_view(t, static_cast<std::size_t>(putInt(t, width, v) - t));
    }
    // Fixed-point field.
    LineBuf& fixed(int width, int decimals, double v) {
        char t[64];
        return *this << std::string_view(t, static_cast<std::size_t>(putFixed(t, width, decimals, v) - t));
    }
    std::string_view view() const { return {b, n}; }
    void clear() { n = 0; }
};
