#include "text/text.hpp"

void blankFill(char* p, std::size_t n) { std::memset(p, ' ', n); }

void TextRef::clear() const {
    std::memset(data, ' ', static_cast<std::size_t>(*hi));
    *hi = 0;
}

void TextRef::assign(std::string_view s) const {
    int n = static_cast<int>(std::min<std::size_t>(s.size(), static_cast<std::size_t>(cap)));
    copyBytes(data, s.data(), static_cast<std::size_t>(n));
    if (*hi > n) std::memset(data + n, ' ', static_cast<std::size_t>(*hi - n));
    while (n > 0 && data[n - 1] == ' ') --n;
    *hi = n;
}

bool TextRef::append(std::string_view s) const {
    int n = len();
    int room = cap - n;
    int k = static_cast<int>(std::min<std::size_t>(s.size(), static_cast<std::size_t>(room)));
    if (k > 0) std::memmove(data + n, s.data(), static_cast<std::size_t>(k));
    int nh = n + k;
    while (nh > n && data[nh - 1] == ' ') --nh;
    if (nh > *hi) *hi = nh;
    return k == static_cast<int>(s.size());
}
