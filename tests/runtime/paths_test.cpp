#include <gtest/gtest.h>

#include <string>

#include "runtime/paths.hpp"
#include "runtime/units.hpp"

namespace {

using PathFn = void (*)(TextRef, std::string_view);

std::string runPath(PathFn f, std::string_view in) {
    NameText out("previous content");  // every routine must overwrite it fully
    f(out, in);
    return std::string(out.trimmed());
}

TEST(Paths, TakingApartOnBothSeparators) {
    struct Case {
        const char* fn;
        PathFn f;
        const char* in;
        const char* out;
    } cases[] = {
        {"FILEFOLDERPATH", FILEFOLDERPATH, "D:\\model\\reach_a.shp", "D:\\model\\"},
        {"FILEFOLDERPATH", FILEFOLDERPATH, "name.txt", ""},
        {"FILEFOLDERPATH", FILEFOLDERPATH, "/x/y", "/x/"},
        {"FILEFOLDERPATH", FILEFOLDERPATH, "a/b\\c.d", "a/b\\"},
        {"FILENAMEEXT", FILENAMEEXT, "D:\\model\\reach_a.shp", "reach_a.shp"},
        {"FILENAMEEXT", FILENAMEEXT, "plain", "plain"},
        {"FILENAMEEXT", FILENAMEEXT, "a/b/", ""},
        {"FILENAME", FILENAME, "D:\\model\\reach_a.shp", "reach_a"},
        {"FILENAME", FILENAME, "a\\.hidden", ".hidden"},
        {"FILENAME", FILENAME, "a\\", ""},
        {"FILENAME", FILENAME, ".x", ""},
        {"FILENAME", FILENAME, "name", "name"},
        {"FILENAME", FILENAME, "a.b\\c", "c"},
        {"FILENAME", FILENAME, "/x/c.tar.gz", "c.tar"},
        {"FILEEXT", FILEEXT, "a.b\\c", ""},
        {"FILEEXT", FILEEXT, ".shp", ".shp"},
        {"FILEEXT", FILEEXT, "c.SHP", ".shp"},
        {"FILEEXT", FILEEXT, "/d.x/file", ""},
        {"FILEEXTKC", FILEEXTKC, "c.SHP", ".SHP"},
        {"FILENAMEPATH", FILENAMEPATH, "D:\\model\\reach_a.shp", "D:\\model\\reach_a"},
        {"FILENAMEPATH", FILENAMEPATH, ".x", ".x"},
        {"FILENAMEPATH", FILENAMEPATH, "a.b/c", "a.b/c"},
        {"FILENAMENO_", FILENAMENO_, "D:\\model\\reach_a.shp", "reach"},
        {"FILENAMENO_", FILENAMENO_, "x\\_a.shp", ""},
        {"FILENAMENO_", FILENAMENO_, "x\\plain.shp", "plain"},
        {"FILENAMEPATHNO_", FILENAMEPATHNO_, "D:\\model\\reach_a.shp", "D:\\model\\reach"},
        {"FILENAMEPATHNO_", FILENAMEPATHNO_, "D:\\my_dir\\reach.shp", "D:\\my_dir\\reach"},
        {"FILE___EXT", FILE___EXT, "D:\\model\\reach_A.shp", "_a"},
        {"FILE___EXT", FILE___EXT, "D:\\my_dir\\reach.shp", ""},
        {"REMOVEDOTDOT", REMOVEDOTDOT, "..\\..\\a\\b\\..\\c", "..\\..\\a\\c"},
        {"REMOVEDOTDOT", REMOVEDOTDOT, "C:\\a\\b\\..\\..\\c", "C:\\c"},
        {"REMOVEDOTDOT", REMOVEDOTDOT, "a\\..\\b", "b"},
        {"REMOVEDOTDOT", REMOVEDOTDOT, "a\\.\\b\\.\\c", "a\\b\\c"},
        {"REMOVEDOTDOT", REMOVEDOTDOT, "ab\\\\\\c", "ab\\c"},
        {"REMOVEDOTDOT", REMOVEDOTDOT, "a\\\\b", "a\\\\b"},  // a double at position 2 stays
        {"REMOVEDOTDOT", REMOVEDOTDOT, "\\\\srv\\a\\..\\b", "\\\\srv\\b"},
        {"REMOVEDOTDOT", REMOVEDOTDOT, "  a\\..\\b  ", "b"},
    };
    for (const Case& c : cases) EXPECT_EQ(runPath(c.f, c.in), c.out) << c.fn << "(" << c.in << ")";
}

TEST(Paths, AddFolder) {
    struct Case {
        const char* folder;
        const char* name;
        const char* out;
    } cases[] = {
        {"C:\\a", "..\\b.txt", "C:\\b.txt"},
        {"C:\\a\\", ".\\b.txt", "C:\\a\\b.txt"},
        {"x", "D:\\y", "D:\\y"},
        {"x", "\\\\srv\\y", "\\\\srv\\y"},
        {"", "", "."},
        {" dir ", "", "dir"},
        {"", " b.txt", "b.txt"},
        {"a/", "b", "a/b"},
        // A single leading separator is not absolute; the doubled backslash of
        // the join collapses only from position 3 on.
        {"ab", "\\c", "ab\\c"},
        {"a", "\\b", "a\\\\b"},
    };
    for (const Case& c : cases) {
        NameText out("junk");
        ADDFOLDER(out, c.folder, c.name);
        EXPECT_EQ(std::string(out.trimmed()), c.out) << "ADDFOLDER(" << c.folder << ", " << c.name << ")";
    }
}

TEST(Paths, CleanPathInPlace) {
    struct Case {
        const char* in;
        const char* out;
    } cases[] = {
        {"  C:\\a\\\\b", "C:\\a\\b"},
        {"\\\\server\\share\\\\x", "\\\\server\\share\\x"},
        {"\\\\\\a", "\\\\a"},
        {"a\\\\\\b", "a\\b"},
        {"a//b///c", "a/b/c"},
        {"//host/x", "//host/x"},
        {"a\\/b", "a\\/b"},
        {"", ""},
    };
    for (const Case& c : cases) {
        NameText t(c.in);
        CLEANPATH(t);
        EXPECT_EQ(std::string(t.trimmed()), c.out) << "CLEANPATH(" << c.in << ")";
    }
}

TEST(Paths, DriveFolder) {
    struct Case {
        const char* in;
        const char* out;
        bool leftAlone;
    } cases[] = {
        {"c:\\model\\", "C Drive\\model\\", false},
        {"  \\\\srv\\share\\", "URL\\srv\\share\\", false},
        {"//srv/x/", "URL\\srv/x/", false},
        {"rel\\dir\\", "rel\\dir\\", true},
    };
    for (const Case& c : cases) {
        NameText t(c.in);
        EXPECT_EQ(DRIVEFOLDER(t), c.leftAlone) << c.in;
        EXPECT_EQ(std::string(t.trimmed()), c.out) << c.in;
    }
}

}  // namespace
