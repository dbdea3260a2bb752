// Composing one line of text for a message or an attribute record from
// pieces of text and whole numbers, without allocation.
#pragma once

#include <cstdint>
#include <string_view>
#include <type_traits>

#include "text/numbers.hpp"

namespace detail {
constexpr std::size_t kLineTextCap = 12000;
extern char lineTextBuffer[kLineTextCap];

inline std::size_t putPiece(std::size_t at, std::string_view s) {
    std::size_t n = s.size() < kLineTextCap - at ? s.size() : kLineTextCap - at;
    for (std::size_t i = 0; i < n; ++i) lineTextBuffer[at + i] = s[i];
    return at + n;
}
template <typename T>
std::size_t putPiece(std::size_t at, T v)
    requires std::is_integral_v<T>
{
    if (kLineTextCap - at < 24) return at;
    return static_cast<std::size_t>(putCount(lineTextBuffer + at, static_cast<int64_t>(v)) - lineTextBuffer);
}
}  // namespace detail

// The pieces run together: texts as they stand, integers in plain decimal.
// One static buffer: use the result before the next call.
template <typename... Pieces>
std::string_view lineText(const Pieces&... pieces) {
    std::size_t at = 0;
    ((at = detail::putPiece(at, pieces)), ...);
    return {detail::lineTextBuffer, at};
}
