#include <gtest/gtest.h>

#include <string>

#include "helpers.hpp"
#include "runtime/platform.hpp"

namespace {

using testutil::TempDir;

TEST(Platform, FilesFoldersAndFullPaths) {
    TempDir dir;
    std::string base = dir.path.string();
    EXPECT_STREQ(nativePath("  a\\b\\c.txt  "), "a/b/c.txt");
    EXPECT_FALSE(platformFileExists("   "));
    EXPECT_FALSE(platformFileExists(base));  // a folder is no file
    EXPECT_EQ(platformMkdir(base + "\\x\\y\\"), 0);  // parents too, Windows separators
    EXPECT_EQ(platformMkdir(base + "/x/y"), 0);      // already there
    testutil::writeFile(base + "/x/y/f.txt", "1");
    EXPECT_EQ(platformMkdir(base + "/x/y/f.txt/z"), 1);
    EXPECT_TRUE(platformFileExists(base + "\\x\\y\\f.txt"));
    int64_t t = 0;
    EXPECT_TRUE(platformModTime(base + "/x/y/f.txt", t));
    EXPECT_GT(t, 0);

    NameText full;
    ASSERT_TRUE(platformFullPath(base + "/x/./y/f.txt", full));
    std::string real = std::filesystem::canonical(base).string();
    EXPECT_EQ(full.trimmed(), real + "/x/y/f.txt");
    ASSERT_TRUE(platformFullPath(base + "/x/y/new.txt", full));  // not there yet
    EXPECT_EQ(full.trimmed(), real + "/x/y/new.txt");
    EXPECT_FALSE(platformFullPath(base + "/nofolder/new.txt", full));
}

TEST(Platform, CopyOneFileOrAllOfABaseName) {
    TempDir dir;
    std::string base = dir.path.string();
    for (const char* leaf : {"r.shp", "r.dbf", "r", "rx.shp", "s.shp"}) testutil::writeFile(base + "/" + leaf, leaf);
    platformMkdir(base + "/to");
    EXPECT_EQ(platformCopy(base + "\\r.*", base + "\\to"), 0);
    EXPECT_EQ(testutil::readFile(base + "/to/r.shp"), "r.shp");
    EXPECT_EQ(testutil::readFile(base + "/to/r.dbf"), "r.dbf");
    EXPECT_TRUE(std::filesystem::exists(base + "/to/r"));
    EXPECT_FALSE(std::filesystem::exists(base + "/to/rx.shp"));
    EXPECT_EQ(platformCopy(base + "/s.shp", base + "/to/t.shp"), 0);  // to a file name
    EXPECT_EQ(testutil::readFile(base + "/to/t.shp"), "s.shp");
    EXPECT_EQ(platformCopy(base + "/none.*", base + "/to"), 1);
}

}  // namespace
