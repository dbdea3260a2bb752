// Where a benchmark writes its layers: a folder under the system's temporary
// folder, made on first use, with the file units set up. One per program.
#pragma once

#include <filesystem>

#include "runtime/units.hpp"

inline const std::filesystem::path& benchFolder(const char* name) {
    static const std::filesystem::path p = [name] {
        auto d = std::filesystem::temp_directory_path() / name;
        std::filesystem::create_directories(d);
        FILEINIT(1000);
        return d;
    }();
    return p;
}
