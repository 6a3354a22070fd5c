#include "platform/files/FilePieces.h"

#include "platform/files/Files.h"
#include "tests/support/FileTesting.h"

#include <gtest/gtest.h>

namespace paperline {
namespace {

using namespace testing_support;

constexpr size_t window = 256 * size_t{1024};

TEST(FilePieces, FindsATextWhereverWindowsMeet) {
    const TestFolder folder;
    for (const size_t at : {size_t{0},
                            window - 1,
                            window - 4,
                            window,
                            2 * window - 7,
                            2 * window + 3,
                            3 * window - 8}) {
        std::string text(3 * window, 'P');
        text.replace(at, 8, "Producer");
        ASSERT_TRUE(put(folder / "file", text));
        const FilePieces file(folder / "file");
        EXPECT_EQ(file.find("Producer"), at);
        EXPECT_EQ(file.find("producer"), std::nullopt);
    }
}

TEST(FilePieces, TakesTheFirstOfSeveral) {
    const TestFolder folder;
    ASSERT_TRUE(put(folder / "file", "..ab..ab" + std::string(window, '.') + "ab"));
    EXPECT_EQ(FilePieces(folder / "file").find("ab"), 2U);
}

TEST(FilePieces, ReadsNoFurtherThanTheFile) {
    const TestFolder folder;
    ASSERT_TRUE(put(folder / "file", "0123456789"));
    const FilePieces file(folder / "file");
    std::vector<uint8_t> bytes(4);
    EXPECT_EQ(file.read(3, bytes), 4U);
    EXPECT_EQ(bytes, bytesOf("3456"));
    EXPECT_EQ(file.read(8, bytes), 2U);
    EXPECT_EQ(file.read(10, bytes), 0U);
    EXPECT_EQ(file.read(UINT64_MAX, bytes), 0U);
}

TEST(FilePieces, OnlyRegularFilesCanBeOpened) {
    const TestFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_FALSE(FilePieces(folder / "pipe").isOpen());
    EXPECT_FALSE(FilePieces(folder / "gone").isOpen());
    EXPECT_FALSE(FilePieces(folder.path()).isOpen());
    EXPECT_FALSE(replaceBytes(folder / "pipe", 0, bytesOf("x")));
}

TEST(FilePieces, ReplacingKeepsLengthAndPermissions) {
    const TestFolder folder;
    ASSERT_TRUE(put(folder / "file", "0123456789"));
    ASSERT_EQ(::chmod((folder / "file").c_str(), 0604), 0);
    EXPECT_TRUE(replaceBytes(folder / "file", 2, bytesOf("ABC")));
    EXPECT_EQ(textOf(folder / "file"), "01ABC56789");
    EXPECT_TRUE(replaceBytes(folder / "file", 8, bytesOf("XYZ")));
    EXPECT_EQ(textOf(folder / "file"), "01ABC567XY");
    EXPECT_TRUE(replaceBytes(folder / "file", 99, bytesOf("XYZ")));
    EXPECT_EQ(textOf(folder / "file"), "01ABC567XY");
    struct stat status = {};
    ASSERT_EQ(::stat((folder / "file").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0604U);
    EXPECT_EQ(folderEntries(folder.path()), std::vector<std::string>{"file"});
}

// Readers of the old file, and its other names, keep what they have.
TEST(FilePieces, ReplacingLeavesASecondNameAlone) {
    const TestFolder folder;
    ASSERT_TRUE(put(folder / "file", "0123456789"));
    ASSERT_EQ(::link((folder / "file").c_str(), (folder / "second").c_str()), 0);
    EXPECT_TRUE(replaceBytes(folder / "file", 2, bytesOf("ABC")));
    EXPECT_EQ(textOf(folder / "file"), "01ABC56789");
    EXPECT_EQ(textOf(folder / "second"), "0123456789");
}

TEST(FilePieces, AFullDiskLeavesTheFileAsItWas) {
    const SmallDisk disk(512);
    const std::string text(400 * size_t{1024}, 'x');
    ASSERT_TRUE(put(disk / "file", text));
    EXPECT_FALSE(replaceBytes(disk / "file", 5, bytesOf("ABC")));
    EXPECT_EQ(textOf(disk / "file"), text);
    EXPECT_EQ(folderEntries(disk.path()), std::vector<std::string>{"file"});
}

} // namespace
} // namespace paperline
