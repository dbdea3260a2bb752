// Path handling: taking paths apart on both separators, joins and clean-up.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "runtime/paths.hpp"

namespace {

// ADDFOLDER with "folder|name" as its input.
void addFolder(TextRef out, std::string_view in) {
    const std::size_t bar = in.find('|');
    ADDFOLDER(out, in.substr(0, bar), in.substr(bar + 1));
}

void cleanPath(TextRef out, std::string_view in) {
    out.assign(in);
    CLEANPATH(out);
}

TEST(Paths, OneTable) {
    struct Group {
        const char* name;
        void (*f)(TextRef, std::string_view);
        std::vector<std::pair<const char*, const char*>> cases;  // input, result
    } groups[] = {
        {"FILEFOLDERPATH", FILEFOLDERPATH, {{"D:\\model\\reach_a.shp", "D:\\model\\"}, {"a/b\\c.d", "a/b\\"}}},
        {"FILENAMEEXT", FILENAMEEXT, {{"D:\\model\\reach_a.shp", "reach_a.shp"}, {"a/b/", ""}}},
        {"FILENAME", FILENAME, {{"a\\.hidden", ".hidden"}, {".x", ""}, {"a.b\\c", "c"}, {"/x/c.tar.gz", "c.tar"}}},
        {"FILEEXT", FILEEXT, {{"a.b\\c", ""}, {"/d.x/file", ""}, {"c.SHP", ".shp"}}},
        {"FILEEXTKC", FILEEXTKC, {{"c.SHP", ".SHP"}}},
        {"FILENAMEPATH", FILENAMEPATH, {{"D:\\model\\reach_a.shp", "D:\\model\\reach_a"}, {"a.b/c", "a.b/c"}}},
        {"FILENAMENO_", FILENAMENO_, {{"D:\\model\\reach_a.shp", "reach"}, {"x\\_a.shp", ""}}},
        {"FILENAMEPATHNO_", FILENAMEPATHNO_, {{"D:\\my_dir\\reach.shp", "D:\\my_dir\\reach"}}},
        {"FILE___EXT", FILE___EXT, {{"D:\\model\\reach_A.shp", "_a"}, {"D:\\my_dir\\reach.shp", ""}}},
        {"REMOVEDOTDOT",
         REMOVEDOTDOT,
         {{"..\\..\\a\\b\\..\\c", "..\\..\\a\\c"},
          {"C:\\a\\b\\..\\..\\c", "C:\\c"},
          {"a\\.\\b\\.\\c", "a\\b\\c"},
          {"ab\\\\\\c", "ab\\c"},
          {"\\\\srv\\a\\..\\b", "\\\\srv\\b"},
          {"  a\\..\\b  ", "b"},
          {"a\\\\b", "a\\\\b"}}},  // a double at position 2 stays
        // In a join, a single leading separator is not absolute, and the doubled
        // backslash collapses only from position 3 on.
        {"ADDFOLDER",
         addFolder,
         {{"C:\\a|..\\b.txt", "C:\\b.txt"},
          {"C:\\a\\|.\\b.txt", "C:\\a\\b.txt"},
          {"x|D:\\y", "D:\\y"},
          {"x|\\\\srv\\y", "\\\\srv\\y"},
          {"|", "."},
          {" dir |", "dir"},
          {"a/|b", "a/b"},
          {"ab|\\c", "ab\\c"},
          {"a|\\b", "a\\\\b"},
          // An absolute name, a blank folder or a blank name is tidied like a join.
          {"a|C:\\x\\..\\y", "C:\\y"},
          {"|x\\.\\y", "x\\y"},
          {"C:\\a\\..\\b|", "C:\\b"}}},
        {"CLEANPATH",
         cleanPath,
         {{"  C:\\a\\\\b", "C:\\a\\b"},
          {"\\\\\\a", "\\\\a"},
          {"\\\\server\\share\\\\x", "\\\\server\\share\\x"},
          {"a//b///c", "a/b/c"},
          {"//host/x", "//host/x"},
          {"a\\/b", "a\\/b"}}},
    };
    for (const Group& g : groups) {
        for (const auto& [in, want] : g.cases) {
            NameText out("previous content");  // every routine must overwrite it fully
            g.f(out, in);
            EXPECT_EQ(out.trimmed(), want) << g.name << "(" << in << ")";
        }
    }
}

}  // namespace
