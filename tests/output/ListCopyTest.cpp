// The page list's copy of a multi-page TIFF: what it shares with the staged pages while the batch
// runs, and that it shares nothing with the user's file.
#include "OutputFixture.h"

#include "ToolOutput.h"
#include "output/ScratchNames.h"
#include "platform/files/FileContent.h"
#include "platform/files/Files.h"
#include "tests/support/OtherFileSystem.h"

#include <gmock/gmock.h>
#include <random>
#include <sys/stat.h>
#include <unistd.h>

namespace paperline {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr uint32_t brandsToTry[] = {2, 3, 7}; // the first two put the scanner's name into pages

struct stat statusOf(const std::string& path) {
    struct stat status = {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
    return status;
}

class ListCopy : public OutputTest {
protected:
    void savePages(uint32_t brand) {
        gBrandNumber = brand;
        makeStagingFolders();
        for (const std::string& name : folderEntries(folder))
            removePath(inFolder(name));
        stageTwo();
    }
    void stageTwo() {
        controller->profileFileformatSelect = formatMultiPageTiff;
        controller->currentPage = controller->currentMultiPage = 1;
        firstPageOfBatch = true;
        for (uint32_t seed : {1U, 2U}) {
            std::mt19937 random(seed);
            Bytes pixels(60 * 40);
            for (uint8_t& sample : pixels)
                sample = static_cast<uint8_t>(random());
            EXPECT_EQ(save(makeTestPage(60, 40, 8, pixels)), 0);
        }
    }
    static std::string listed(const std::string& name) {
        return scratchPath(listStagingFolderName) + "/" + name;
    }
    std::string usersFile() const { return inFolder("Image_00001.tif"); }
    static std::string listFile() { return scratchPath(scratchRootName) + "/Image_00001.tif"; }
};

TEST_F(ListCopy, StagedPagesAreTheSameForBoth) {
    for (const uint32_t brand : brandsToTry) {
        savePages(brand);
        for (const char* name : {"Image_00001.tif", "Image_00002.tif"}) {
            EXPECT_EQ(statusOf(staged(name)).st_ino, statusOf(listed(name)).st_ino);
            // The scanner's name was put in before the page got its second name.
            EXPECT_EQ(outputOf("exiftool -s3 -IFD0:Make '" + listed(name) + "' 2>&1"),
                      brand == 7 ? "" : "Alpha\n");
        }
    }
}

TEST_F(ListCopy, PagesAreCopiedWhereTheyCannotHaveASecondName) {
    savePages(7);
    EXPECT_TRUE(controller->joinMultiPageFile());
    const Bytes usual = readFile(listFile()).value_or(Bytes());
    EXPECT_FALSE(usual.empty());

    makeStagingFolders();
    const testing_support::OtherFileSystem elsewhere(
        testing_support::deviceOf(scratchPath(stagingFolderName)));
    for (const uint32_t brand : brandsToTry) {
        savePages(brand);
        removePath(scratchPath(listStagingFolderName));
        ASSERT_EQ(::symlink(elsewhere.path().c_str(), scratchPath(listStagingFolderName).c_str()),
                  0);
        stageTwo();
        for (const char* name : {"Image_00001.tif", "Image_00002.tif"}) {
            EXPECT_EQ(statusOf(listed(name)).st_nlink, 1U);
            EXPECT_EQ(readFile(listed(name)), readFile(staged(name)));
        }
        EXPECT_TRUE(controller->joinMultiPageFile());
        EXPECT_EQ(readFile(listFile()), usual); // joined pages carry no scanner's name here
        EXPECT_TRUE(fileExists(usersFile()));
    }
}

// The user may change the file while the list still shows its pages.
TEST_F(ListCopy, AChangeOfTheUsersFileLeavesTheListsAlone) {
    for (const uint32_t brand : brandsToTry) {
        savePages(brand);
        ASSERT_TRUE(controller->joinMultiPageFile());
        const std::optional<Bytes> before = readFile(listFile());
        ASSERT_TRUE(before && !before->empty());
        EXPECT_EQ(readFile(usersFile()) == before, brand == 7);
        ASSERT_TRUE(writeFile(usersFile(), Bytes{'u', 's', 'e', 'r'}));
        EXPECT_EQ(readFile(listFile()), before);
        ASSERT_TRUE(writeFile(listFile(), Bytes{'l', 'i', 's', 't'}));
        EXPECT_EQ(textOf(usersFile()), "user");
    }
}

TEST_F(ListCopy, KeptPagesOutliveTheListsNamesOfThem) {
    savePages(7);
    const std::optional<Bytes> page = readFile(staged("Image_00002.tif"));
    multiPageTargetPath = inFolder("gone/Image_00001.tif");
    EXPECT_FALSE(controller->joinMultiPageFile());
    controller->keepStagedPages();
    ASSERT_THAT(controller->keptPagesFolders, SizeIs(1));
    makeStagingFolders(); // the next batch
    stageTwo();
    const std::string kept = controller->keptPagesFolders[0] + "/Image_00002.tif";
    EXPECT_EQ(readFile(kept), page);
    EXPECT_EQ(statusOf(kept).st_nlink, 1U);
}

// What an earlier page left under the name makes way; the page itself stays untouched.
TEST_F(ListCopy, AnOlderCopyOfAPageMakesWay) {
    savePages(7);
    const std::optional<Bytes> page = readFile(staged("Image_00001.tif"));
    removePath(listed("Image_00001.tif"));
    touch(listed("Image_00001.tif"), "older");
    stageTwo();
    EXPECT_EQ(readFile(listed("Image_00001.tif")), page);
    EXPECT_EQ(readFile(staged("Image_00001.tif")), page);
    EXPECT_THAT(folderEntries(scratchPath(listStagingFolderName)), SizeIs(2));
}

// Only the list's: the user's file has all pages, and nobody is told.
TEST_F(ListCopy, APageThatCannotBeCopiedIsMissingInTheListOnly) {
    savePages(7);
    removePath(scratchPath(listStagingFolderName));
    stageTwo();
    EXPECT_TRUE(controller->joinMultiPageFile());
    EXPECT_THAT(alerts, IsEmpty());
    EXPECT_THAT(folderEntries(folder), ElementsAre("Image_00001.tif"));
    EXPECT_FALSE(fileExists(listFile()));
}

} // namespace
} // namespace paperline
