// The operating-system layer: native names, files against folders, full paths.
#include <gtest/gtest.h>

#include <string>

#include "helpers.hpp"
#include "runtime/paths.hpp"
#include "runtime/platform.hpp"

TEST(Platform, FilesFoldersAndFullPaths) {
    testutil::TempDir dir;
    const std::string base = dir.path.string();
    EXPECT_STREQ(nativePath("  a\\b\\c.txt  "), "a/b/c.txt");
    EXPECT_FALSE(platformFileExists("   "));
    EXPECT_FALSE(platformFileExists(base));          // a folder is no file
    EXPECT_EQ(platformMkdir(base + "\\x\\y\\"), 0);  // parents too, Windows separators
    testutil::writeFile(base + "/x/y/f.txt", "1");
    EXPECT_TRUE(platformFileExists(base + "\\x\\y\\f.txt"));
    EXPECT_EQ(platformMkdir(base + "/x/y/f.txt/z"), 1);

    NameText full;
    const std::string real = std::filesystem::canonical(base).string();
    ASSERT_TRUE(platformFullPath(base + "/x/./y/f.txt", full));
    EXPECT_EQ(full.trimmed(), real + "/x/y/f.txt");
    ASSERT_TRUE(platformFullPath(base + "/x/y/new.txt", full));  // not there yet
    EXPECT_EQ(full.trimmed(), real + "/x/y/new.txt");
    EXPECT_FALSE(platformFullPath(base + "/nofolder/new.txt", full));
}
