// Helpers that tests of every folder use: whole files, CR LF texts, bytes in
// a stated order, and what the console showed.
#pragma once

#include <bit>
#include <cstdint>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "runtime/console.hpp"

namespace tc {

inline std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

inline void writeFile(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

// Lines joined with CR LF, as the system's text files end them.
inline std::string crlf(std::initializer_list<std::string> lines) {
    std::string s;
    for (const auto& l : lines) s += l + "\r\n";
    return s;
}

inline std::string leBytes(uint64_t u, int bytes) {
    std::string s(static_cast<std::size_t>(bytes), '\0');
    for (int i = 0; i < bytes; ++i) s[static_cast<std::size_t>(i)] = static_cast<char>((u >> (8 * i)) & 0xFF);
    return s;
}
inline std::string le64(double d) { return leBytes(std::bit_cast<uint64_t>(d), 8); }
inline std::string le32(int32_t v) { return leBytes(static_cast<uint32_t>(v), 4); }
inline std::string le16(int v) { return leBytes(static_cast<uint32_t>(v), 2); }
inline std::string be32(int32_t v) {
    const std::string s = le32(v);
    return {s.rbegin(), s.rend()};
}
inline std::string zeros(std::size_t n) { return std::string(n, '\0'); }

// `s` cut or padded with `pad` to `width`, on the right or (right true) on the left.
inline std::string padded(const std::string& s, std::size_t width, char pad = ' ', bool right = false) {
    const std::string v = s.substr(0, width);
    const std::string fill(width - v.size(), pad);
    return right ? fill + v : v + fill;
}

// What `body` writes to the console.
template <class F>
std::string captureConsole(F body) {
    conFlush();
    ::testing::internal::CaptureStdout();
    body();
    conFlush();
    return ::testing::internal::GetCapturedStdout();
}

}  // namespace tc
