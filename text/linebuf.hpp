// Composing one line of text from pieces, in fixed storage: texts as they
// stand, whole numbers in plain decimal or right-justified in a width, and
// fixed-point fields. What does not fit the capacity is cut.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

#include "text/numbers.hpp"

template <std::size_t N>
struct LineBuf {
    char b[N];
    std::size_t n = 0;

    LineBuf& operator<<(std::string_view s) {
        const std::size_t k = s.size() < N - n ? s.size() : N - n;
        copyBytes(b + n, s.data(), k);
        n += k;
        return *this;
    }
    LineBuf& operator<<(char c) {
        if (n < N) b[n++] = c;
        return *this;
    }
    // A whole number in plain decimal.
    LineBuf& count(int64_t v) {
        char t[24];
        return *this << std::string_view(t, static_cast<std::size_t>(putCount(t, v) - t));
    }
    // A whole number right-justified in `width` bytes.
    LineBuf& put(int width, int64_t v) {
        char t[64];
        return *this << std::string_view(t, static_cast<std::size_t>(putInt(t, width, v) - t));
    }
    // A fixed-point field of `width` bytes with `decimals` decimals.
    LineBuf& fixed(int width, int decimals, double v) {
        if (width <= 64 && N - n >= static_cast<std::size_t>(width)) {
            n = static_cast<std::size_t>(putFixed(b + n, width, decimals, v) - b);
            return *this;
        }
        char t[64];
        return *this << std::string_view(
                   t, static_cast<std::size_t>(putFixed(t, width < 64 ? width : 64, decimals, v) - t));
    }
    // A text in double quotes.
    LineBuf& quoted(std::string_view s) { return *this << '"' << s << '"'; }

    std::string_view view() const { return {b, n}; }
    void clear() { n = 0; }
};

namespace linebuf_detail {
inline LineBuf<12000> shared;
inline void piece(std::string_view s) { shared << s; }
template <typename T>
void piece(T v) requires std::is_integral_v<T> {
    shared.count(static_cast<int64_t>(v));
}
}  // namespace linebuf_detail

// The pieces run together in one static buffer: texts as they stand, whole
// numbers in plain decimal. Use the result before the next call.
template <typename... Pieces>
std::string_view lineText(const Pieces&... pieces) {
    linebuf_detail::shared.clear();
    (linebuf_detail::piece(pieces), ...);
    return linebuf_detail::shared.view();
}
