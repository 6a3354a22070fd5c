#include "dsm/SourceFiles.h"

#include "TestPlaces.h"
#include "dsm/DefaultSource.h"
#include "dsm/Log.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <cstring>

namespace paperline::dsm {
namespace {

namespace fs = std::filesystem;
using test::infoPlist;
using test::TestPlaces;
using test::writeText;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

void addBundle(const fs::path& folder, const std::string& name, const std::string& more = {}) {
    const fs::path contents = folder / name / "Versions/A";
    writeText(contents / "Resources/Info.plist", infoPlist("exe", more));
    writeText(contents / "exe", name);
}

// The paths below the test's folder, so that they can be written out.
std::vector<std::string> found(const TestPlaces& test) {
    const SearchPlaces places{{test.systemBundles(), test.userBundles()}, test.plainSources()};
    std::vector<std::string> names;
    for (const SourceFile& file : findSourceFiles(places))
        names.push_back(fs::relative(file.path, test.folder()).string() +
                        (file.fallback ? " (fallback)" : ""));
    return names;
}

TEST(SourceFiles, AreBundlesOfTheFoldersInOrderThenPlainFiles) {
    const TestPlaces test;
    addBundle(test.userBundles(), "A.ds");
    addBundle(test.systemBundles(), "C.DS");
    addBundle(test.systemBundles(), "B.ds", "<key>PaperlineFallback</key><true/>");
    addBundle(test.systemBundles(), "notes");
    writeText(test.plainSources() / "maker/one.ds", "1");
    writeText(test.plainSources() / "two.ds.2.0", "2");
    const std::string system = "root/Library/Image Capture/TWAIN Data Sources/";
    EXPECT_THAT(found(test),
                ElementsAre(system + "B.ds/Versions/A/exe (fallback)",
                            system + "C.DS/Versions/A/exe",
                            "data/paperline/TWAIN Data Sources/A.ds/Versions/A/exe",
                            "root/usr/local/lib/twain/maker/one.ds",
                            "root/usr/local/lib/twain/two.ds.2.0"));
}

TEST(SourceFiles, AreNoneWhereNoFolderIs) {
    const TestPlaces test;
    EXPECT_THAT(found(test), IsEmpty());
}

TEST(SourceFiles, LeaveOutWhatIsNoUsableBundleAndSaySo) {
    const TestPlaces test;
    const fs::path folder = test.systemBundles();
    writeText(folder / "text.ds", "a text file");
    fs::create_directories(folder / "empty.ds");
    writeText(folder / "damaged.ds/Versions/A/Resources/Info.plist", "<plist><dict><key>CFB");
    writeText(folder / "missing.ds/Versions/A/Resources/Info.plist", infoPlist("exe"));
    addBundle(folder, "folder.ds");
    fs::remove(folder / "folder.ds/Versions/A/exe");
    fs::create_directories(folder / "folder.ds/Versions/A/exe");
    fs::create_symlink("loop2.ds", folder / "loop1.ds");
    fs::create_symlink("loop1.ds", folder / "loop2.ds");
    addBundle(folder, "good.ds");
    EXPECT_EQ(found(test).size(), 1U);
    for (const char* line : {"text.ds: is no bundle",
                             "empty.ds: has no usable Info.plist",
                             "damaged.ds: has no usable Info.plist",
                             "missing.ds/Versions/A/exe: is no file",
                             "folder.ds/Versions/A/exe: is no file",
                             "loop1.ds: is no bundle",
                             "loop2.ds: is no bundle"})
        EXPECT_THAT(test.log(), HasSubstr(line));
}

TEST(SourceFiles, CountOnceUnderSeveralNames) {
    const TestPlaces test;
    addBundle(test.systemBundles(), "scanner.ds");
    fs::create_symlink("scanner.ds", test.systemBundles() / "alias.ds");
    fs::create_directories(test.userBundles());
    fs::create_directory_symlink(test.systemBundles() / "scanner.ds",
                                 test.userBundles() / "again.ds");
    EXPECT_EQ(found(test).size(), 1U);
}

TEST(PlainSourceFiles, FollowNoLinksAndNotEveryName) {
    const TestPlaces test;
    const fs::path folder = test.plainSources();
    writeText(folder / "a/scanner.ds", "1");
    writeText(folder / "a/readme.dsx", "no");
    writeText(folder / "a/scanner.so", "no");
    fs::create_directory_symlink("..", folder / "a/up"); // a loop
    writeText(test.folder() / "elsewhere/other.ds", "no");
    fs::create_directory_symlink(test.folder() / "elsewhere", folder / "away");
    fs::create_symlink(test.folder() / "elsewhere/other.ds", folder / "link.ds");
    EXPECT_THAT(found(test), ElementsAre("root/usr/local/lib/twain/a/scanner.ds"));
}

TEST(PlainSourceFiles, AreLookedForInBoundedDepth) {
    const TestPlaces test;
    fs::path deep = test.plainSources();
    for (int i = 0; i < 8; ++i)
        deep /= "d";
    writeText(deep / "deepest.ds", "1");
    writeText(deep / "d/toodeep.ds", "1");
    ASSERT_EQ(found(test).size(), 1U);
    EXPECT_THAT(found(test)[0], HasSubstr("deepest.ds"));
}

TEST(BundleAround, IsFoundFromItsFrameworksFolderOnly) {
    EXPECT_EQ(folderOfBundleAround("/b/dev/Paperline.app/Contents/Frameworks/lib.so"), "/b/dev");
    EXPECT_EQ(folderOfBundleAround("/b/dev/Paperline.app/Contents/MACOS/lib.so"), "");
    EXPECT_EQ(folderOfBundleAround("/usr/lib/lib.so"), "");
    EXPECT_EQ(folderOfBundleAround("/Contents/Frameworks/lib.so"), "");
    EXPECT_EQ(folderOfBundleAround("lib.so"), "");
    EXPECT_EQ(folderOfBundleAround(""), "");
}

TEST(DefaultSource, IsThreeLinesInTheUsersDataFolder) {
    const TestPlaces test;
    EXPECT_EQ(readDefaultSource(), "");
    twain::abi::Identity identity{};
    std::strcpy(identity.Manufacturer, "Maker");
    std::strcpy(identity.ProductFamily, "two\nlines");
    std::memset(identity.ProductName, 'P', sizeof(identity.ProductName)); // without a zero
    const std::string lines = nameLines(identity);
    EXPECT_EQ(lines, "Maker\ntwo lines\n" + std::string(34, 'P') + "\n");
    EXPECT_TRUE(writeDefaultSource(lines));
    EXPECT_EQ(test::readText(test.folder() / "data/paperline/default-source"), lines);
    EXPECT_EQ(readDefaultSource(), lines);
}

TEST(DefaultSource, IsNotWrittenWhereThereIsNoFolderForIt) {
    const TestPlaces test;
    writeText(test.folder() / "data", "a file in the folder's place");
    EXPECT_FALSE(writeDefaultSource("a\nb\nc\n"));
    ::unsetenv("XDG_DATA_HOME");
    ::unsetenv("HOME");
    EXPECT_FALSE(writeDefaultSource("a\nb\nc\n"));
}

TEST(Log, KeepsALineALine) {
    const TestPlaces test;
    logLine("name with\na break\x1b[31m");
    EXPECT_EQ(test.log(), "data source manager: name with?a break?[31m\n");
}

} // namespace
} // namespace paperline::dsm
