#include "platform/files/Files.h"

#include "platform/files/FileContent.h"
#include "platform/files/PathText.h"
#include "tests/support/FileTesting.h"

#include <algorithm>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <thread>

namespace paperline {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using namespace testing_support;

TEST(PathText, TakesTheLastComponent) {
    EXPECT_EQ(lastPathComponent("/a/b"), "b");
    EXPECT_EQ(lastPathComponent("/a/b/"), "b");
    EXPECT_EQ(lastPathComponent("/a//b//"), "b");
    EXPECT_EQ(lastPathComponent("a"), "a");
    EXPECT_EQ(lastPathComponent("/"), "/");
    EXPECT_EQ(lastPathComponent("//"), "/");
    EXPECT_EQ(lastPathComponent(""), "");
}

TEST(PathText, TakesTheFolder) {
    EXPECT_EQ(folderOfPath("/a/b"), "/a");
    EXPECT_EQ(folderOfPath("/a/b/"), "/a");
    EXPECT_EQ(folderOfPath("/a//b"), "/a");
    EXPECT_EQ(folderOfPath("/a"), "/");
    EXPECT_EQ(folderOfPath("/"), "/");
    EXPECT_EQ(folderOfPath("a"), "");
    EXPECT_EQ(folderOfPath("a/b"), "a");
    EXPECT_EQ(folderOfPath(""), "");
}

TEST(PathText, JoinsWithOneSlash) {
    EXPECT_EQ(appendPathComponent("/a", "b"), "/a/b");
    EXPECT_EQ(appendPathComponent("/a/", "b"), "/a/b");
    EXPECT_EQ(appendPathComponent("/a", "/b"), "/a/b");
    EXPECT_EQ(appendPathComponent("/", "b"), "/b");
    EXPECT_EQ(appendPathComponent("", "b"), "b");
    EXPECT_EQ(appendPathComponent("/a", ""), "/a");
    EXPECT_EQ(appendPathComponent("user", "Product/One"), "user/Product/One");
}

TEST(PathText, KnowsExtensions) {
    EXPECT_EQ(pathExtension("x.ds"), "ds");
    EXPECT_EQ(pathExtension("/a.b/x"), "");
    EXPECT_EQ(pathExtension("x.ds/"), "ds");
    EXPECT_EQ(pathExtension("x.tar.gz"), "gz");
    EXPECT_EQ(pathExtension(".hidden"), "");
    EXPECT_EQ(pathExtension("x."), "");
    EXPECT_EQ(withoutPathExtension("/a/x.ds"), "/a/x");
    EXPECT_EQ(withoutPathExtension("/a.b/x"), "/a.b/x");
    EXPECT_EQ(withoutPathExtension("x.tar.gz"), "x.tar");
    EXPECT_EQ(withoutPathExtension("/a/.hidden"), "/a/.hidden");
    EXPECT_EQ(withoutPathExtension("/"), "/");
}

TEST(Existence, LooksThroughLinks) {
    const TestFolder folder;
    ASSERT_TRUE(put(folder / "file", "x"));
    ASSERT_EQ(::symlink("file", (folder / "link").c_str()), 0);
    ASSERT_EQ(::symlink("nothing", (folder / "dangling").c_str()), 0);
    EXPECT_TRUE(fileExists(folder / "file"));
    EXPECT_TRUE(fileExists(folder / "link"));
    EXPECT_TRUE(fileExists(folder.path()));
    EXPECT_FALSE(fileExists(folder / "dangling"));
    EXPECT_FALSE(folderExists(folder / "file"));
    EXPECT_TRUE(folderExists(folder.path()));
    EXPECT_FALSE(fileExists(""));
}

TEST(Existence, KnowsWhatMayBeWritten) {
    const TestFolder folder;
    EXPECT_TRUE(isWritable(folder.path()));
    ASSERT_TRUE(put(folder / "file", "x"));
    EXPECT_TRUE(isWritable(folder / "file"));
    EXPECT_FALSE(isWritable(folder / "missing"));
    inChild([&] {
        ASSERT_TRUE(createFolder(folder / "closed"));
        ASSERT_EQ(::chmod((folder / "file").c_str(), 0444), 0);
        ASSERT_EQ(::chmod((folder / "closed").c_str(), 0555), 0);
        ASSERT_EQ(::chmod(folder.path().c_str(), 0755), 0);
        // To root nothing is closed.
        if (::geteuid() == 0) {
            ASSERT_EQ(::setresuid(65534, 65534, 65534), 0);
        }
        EXPECT_FALSE(isWritable(folder / "file"));
        EXPECT_FALSE(isWritable(folder / "closed"));
    });
}

TEST(Folders, AreMadeOneLevelOrAll) {
    const TestFolder folder;
    EXPECT_FALSE(createFolder(folder / "a/b"));
    EXPECT_TRUE(createFolder(folder / "a"));
    EXPECT_FALSE(createFolder(folder / "a"));
    EXPECT_TRUE(createFolderWithParents(folder / "x/y/z"));
    EXPECT_TRUE(folderExists(folder / "x/y/z"));
    EXPECT_TRUE(createFolderWithParents(folder / "x/y/z/"));
    ASSERT_TRUE(put(folder / "file", "x"));
    EXPECT_FALSE(createFolderWithParents(folder / "file"));
    EXPECT_FALSE(createFolderWithParents(folder / "file/below"));
}

TEST(PrivateFolder, IsOursAndClosedToOthers) {
    const TestFolder folder;
    const std::string path = folder / "private";
    EXPECT_TRUE(createPrivateFolder(path));
    struct stat status = {};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0700U);
    // Already ours, but opened to others meanwhile.
    ASSERT_EQ(::chmod(path.c_str(), 0777), 0);
    EXPECT_TRUE(createPrivateFolder(path + "/"));
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0700U);
}

TEST(PrivateFolder, IsNotTakenThroughALinkOrFromAFile) {
    const TestFolder folder;
    ASSERT_TRUE(createFolder(folder / "target"));
    ASSERT_EQ(::symlink("target", (folder / "link").c_str()), 0);
    EXPECT_FALSE(createPrivateFolder(folder / "link"));
    EXPECT_FALSE(createPrivateFolder(folder / "link/"));
    ASSERT_TRUE(put(folder / "file", "x"));
    EXPECT_FALSE(createPrivateFolder(folder / "file"));
    EXPECT_FALSE(createPrivateFolder(folder / "missing/below"));
}

TEST(PrivateFolder, IsNotTakenFromAnotherUser) {
    const TestFolder folder;
    const std::string path = folder / "private";
    ASSERT_TRUE(createPrivateFolder(path));
    asAnotherUsers(path, [&] { EXPECT_FALSE(createPrivateFolder(path)); });
}

TEST(Ownership, IsJudgedWithoutFollowingLinks) {
    const TestFolder folder;
    ASSERT_TRUE(put(folder / "own", "x"));
    ASSERT_EQ(::symlink("own", (folder / "link").c_str()), 0);
    EXPECT_TRUE(ownedByUserOrRoot(folder / "own"));
    EXPECT_TRUE(ownedByUserOrRoot("/etc"));
    EXPECT_FALSE(ownedByUserOrRoot(folder / "link"));
    EXPECT_FALSE(ownedByUserOrRoot(folder / "missing"));
    asAnotherUsers(folder / "own", [&] { EXPECT_FALSE(ownedByUserOrRoot(folder / "own")); });
}

TEST(Removal, TakesFilesLinksAndTrees) {
    const TestFolder folder;
    ASSERT_TRUE(createFolderWithParents(folder / "tree/deep/deeper"));
    ASSERT_TRUE(put(folder / "tree/deep/file", "x"));
    ASSERT_TRUE(put(folder / "kept", "kept"));
    ASSERT_TRUE(createFolder(folder / "keptFolder"));
    ASSERT_TRUE(put(folder / "keptFolder/inside", "inside"));
    ASSERT_EQ(::symlink((folder / "keptFolder").c_str(), (folder / "tree/deep/link").c_str()), 0);
    ASSERT_EQ(::symlink("keptFolder", (folder / "link").c_str()), 0);
    EXPECT_TRUE(removePath(folder / "tree"));
    EXPECT_TRUE(removePath(folder / "link/"));
    EXPECT_TRUE(removePath(folder / "kept"));
    EXPECT_TRUE(removePath(folder / "missing"));
    EXPECT_FALSE(removePath(""));
    EXPECT_THAT(folderEntries(folder.path()), ElementsAre("keptFolder"));
    EXPECT_EQ(textOf(folder / "keptFolder/inside"), "inside");
}

TEST(Listing, GivesNamesOfOneLevelOrAll) {
    const TestFolder folder;
    ASSERT_TRUE(createFolderWithParents(folder / "a/b"));
    ASSERT_TRUE(put(folder / "a/b/c.ds", "x"));
    ASSERT_TRUE(put(folder / ".hidden", "x"));
    ASSERT_EQ(::symlink("..", (folder / "a/loop").c_str()), 0);
    EXPECT_THAT(folderEntries(folder.path()), UnorderedElementsAre("a", ".hidden"));
    const auto all = UnorderedElementsAre("a", "a/b", "a/b/c.ds", "a/loop", ".hidden");
    EXPECT_THAT(deepFolderEntries(folder.path()), all);
    EXPECT_THAT(deepFolderEntries(folder.path() + "//"), all);
    EXPECT_THAT(folderEntries(folder / "missing"), IsEmpty());
    EXPECT_THAT(deepFolderEntries(folder / ".hidden"), IsEmpty());
}

TEST(Listing, PutsAFolderBeforeWhatItHolds) {
    const TestFolder folder;
    ASSERT_TRUE(createFolderWithParents(folder / "a/b"));
    EXPECT_THAT(deepFolderEntries(folder.path()), ElementsAre("a", "a/b"));
}

TEST(Reading, GivesAllBytesUpToALimit) {
    const TestFolder folder;
    ASSERT_TRUE(put(folder / "file", std::string_view("a\0b\xFF", 4)));
    EXPECT_EQ(readFile(folder / "file"), (std::vector<uint8_t>{'a', 0, 'b', 0xFF}));
    EXPECT_TRUE(readFile(folder / "file", 4).has_value());
    EXPECT_FALSE(readFile(folder / "file", 3).has_value());
    ASSERT_TRUE(put(folder / "empty", ""));
    EXPECT_EQ(readFile(folder / "empty"), std::vector<uint8_t>());
    EXPECT_FALSE(readFile(folder / "missing").has_value());
    EXPECT_FALSE(readFile(folder.path()).has_value());
}

TEST(Reading, TakesFilesThatAnnounceNoSize) {
    const auto bytes = readFile("/proc/self/status");
    ASSERT_TRUE(bytes.has_value());
    EXPECT_GT(bytes->size(), 100U);
    EXPECT_FALSE(readFile("/proc/self/status", 10).has_value());
}

TEST(Reading, DoesNotWaitAtAPipe) {
    const TestFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_FALSE(readFile(folder / "pipe").has_value());
    EXPECT_FALSE(copyFile(folder / "pipe", folder / "copy"));
    EXPECT_FALSE(put(folder / "pipe", "x"));
}

TEST(Writing, ReplacesTheContent) {
    const TestFolder folder;
    EXPECT_TRUE(put(folder / "file", "long content"));
    EXPECT_TRUE(put(folder / "file", "short"));
    EXPECT_EQ(textOf(folder / "file"), "short");
    EXPECT_FALSE(put(folder / "missing/file", "x"));
    EXPECT_FALSE(put(folder.path(), "x"));
}

TEST(Writing, FollowsNoLinkInASharedFolder) {
    const TestFolder folder;
    ASSERT_TRUE(createFolder(folder / "everyones"));
    ASSERT_EQ(::chmod((folder / "everyones").c_str(), 01777), 0);
    ASSERT_TRUE(put(folder / "victim", "precious"));
    ASSERT_EQ(::symlink("../victim", (folder / "everyones/1.jpg").c_str()), 0);
    EXPECT_FALSE(put(folder / "everyones/1.jpg", "page"));
    EXPECT_EQ(textOf(folder / "victim"), "precious");
    // A hard link is the same trap.
    ASSERT_EQ(::link((folder / "victim").c_str(), (folder / "everyones/2.jpg").c_str()), 0);
    EXPECT_FALSE(put(folder / "everyones/2.jpg", "page"));
    EXPECT_EQ(textOf(folder / "victim"), "precious");
    EXPECT_TRUE(put(folder / "everyones/3.jpg", "page"));
    EXPECT_TRUE(put(folder / "everyones/3.jpg", "next"));
    EXPECT_EQ(textOf(folder / "everyones/3.jpg"), "next");
}

TEST(Writing, LeavesAnotherUsersFileInASharedFolderAlone) {
    const TestFolder folder;
    ASSERT_TRUE(createFolder(folder / "everyones"));
    ASSERT_EQ(::chmod((folder / "everyones").c_str(), 01777), 0);
    ASSERT_TRUE(put(folder / "everyones/1.jpg", "theirs"));
    ASSERT_EQ(::chmod((folder / "everyones/1.jpg").c_str(), 0666), 0);
    asAnotherUsers(folder / "everyones/1.jpg", [&] {
        const std::string before = textOf(folder / "everyones/1.jpg");
        EXPECT_FALSE(put(folder / "everyones/1.jpg", "page"));
        EXPECT_EQ(textOf(folder / "everyones/1.jpg"), before);
    });
}

TEST(AtomicWriting, ReplacesInOneStepAndKeepsPermissions) {
    const TestFolder folder;
    const std::string path = folder / "settings";
    ASSERT_TRUE(put(path, "old"));
    ASSERT_EQ(::chmod(path.c_str(), 0600), 0);
    struct stat before = {};
    ASSERT_EQ(::stat(path.c_str(), &before), 0);
    EXPECT_TRUE(writeFileAtomically(path, bytesOf("new")));
    EXPECT_EQ(textOf(path), "new");
    struct stat after = {};
    ASSERT_EQ(::stat(path.c_str(), &after), 0);
    EXPECT_EQ(after.st_mode & 07777U, 0600U);
    EXPECT_NE(after.st_ino, before.st_ino); // readers of the old file keep it
    EXPECT_THAT(folderEntries(folder.path()), ElementsAre("settings"));
}

TEST(AtomicWriting, LeavesTheOldFileWhenItFails) {
    const TestFolder folder;
    EXPECT_FALSE(writeFileAtomically(folder / "missing/settings", bytesOf("new")));
    ASSERT_TRUE(createFolderWithParents(folder / "taken/inside"));
    EXPECT_FALSE(writeFileAtomically(folder / "taken", bytesOf("new")));
    EXPECT_THAT(folderEntries(folder.path()), ElementsAre("taken"));
}

TEST(WholeFile, AppearsOnlyOnce) {
    const TestFolder folder;
    EXPECT_EQ(createFileWhole(folder / "page", bytesOf("one")), CreateResult::created);
    EXPECT_EQ(createFileWhole(folder / "page", bytesOf("two")), CreateResult::alreadyThere);
    EXPECT_EQ(textOf(folder / "page"), "one");
    ASSERT_EQ(::symlink("nothing", (folder / "dangling").c_str()), 0);
    EXPECT_EQ(createFileWhole(folder / "dangling", bytesOf("x")), CreateResult::alreadyThere);
    EXPECT_FALSE(fileExists(folder / "nothing"));
    EXPECT_EQ(createFileWhole(folder / "missing/page", bytesOf("x")), CreateResult::notOpened);
    EXPECT_EQ(createFileWhole(folder / std::string(256, 'n'), bytesOf("x")),
              CreateResult::notOpened);
    EXPECT_THAT(folderEntries(folder.path()), UnorderedElementsAre("page", "dangling"));
}

TEST(WholeFile, TakesBytesThatAreStillBeingMade) {
    const TestFolder folder;
    std::vector<uint8_t> bytes(1'000'003);
    size_t made = 0;
    const AwaitBytes awaitBytes = [&bytes, &made](size_t end) {
        ASSERT_GT(end, made);
        ASSERT_LE(end, bytes.size());
        for (; made < end; ++made)
            bytes[made] = static_cast<uint8_t>(made % 251 + 1);
    };
    EXPECT_EQ(createFileWhole(folder / "page", bytes, awaitBytes), CreateResult::created);
    EXPECT_EQ(made, bytes.size());
    EXPECT_EQ(readFile(folder / "page"), bytes);
    EXPECT_EQ(createFileWhole(folder / "page", bytes, awaitBytes), CreateResult::alreadyThere);
}

TEST(WholeFile, FollowsTheUmask) {
    const TestFolder folder;
    inChild([&] {
        ::umask(0027);
        EXPECT_EQ(createFileWhole(folder / "page", bytesOf("x")), CreateResult::created);
        struct stat status = {};
        ASSERT_EQ(::stat((folder / "page").c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777U, 0640U);
    });
}

TEST(WholeFile, IsWonByOneOfManyWriters) {
    const TestFolder folder;
    const std::string path = folder / "page";
    std::vector<CreateResult> results(8);
    std::vector<std::thread> writers;
    for (size_t index = 0; index < results.size(); ++index)
        writers.emplace_back([&results, &path, index] {
            const std::vector<uint8_t> bytes(100'000, static_cast<uint8_t>(index));
            results[index] = createFileWhole(path, bytes);
        });
    for (std::thread& writer : writers)
        writer.join();
    EXPECT_EQ(std::count(results.begin(), results.end(), CreateResult::created), 1);
    EXPECT_EQ(std::count(results.begin(), results.end(), CreateResult::alreadyThere), 7);
    const auto bytes = readFile(path);
    ASSERT_TRUE(bytes && bytes->size() == 100'000);
    EXPECT_EQ(std::count(bytes->begin(), bytes->end(), bytes->front()), 100'000);
}

TEST(Copying, KeepsBytesAndPermissionsAndNeverReplaces) {
    const TestFolder folder;
    ASSERT_TRUE(put(folder / "from", "content"));
    ASSERT_EQ(::chmod((folder / "from").c_str(), 0640), 0);
    EXPECT_TRUE(copyFile(folder / "from", folder / "to"));
    EXPECT_EQ(textOf(folder / "to"), "content");
    struct stat status = {};
    ASSERT_EQ(::stat((folder / "to").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0640U);
    ASSERT_TRUE(put(folder / "other", "other"));
    EXPECT_FALSE(copyFile(folder / "from", folder / "other"));
    EXPECT_EQ(textOf(folder / "other"), "other");
    EXPECT_FALSE(copyFile(folder / "missing", folder / "new"));
    EXPECT_FALSE(copyFile(folder.path(), folder / "new"));
    EXPECT_FALSE(copyFile(folder / "from", folder / "missing/new"));
    EXPECT_FALSE(fileExists(folder / "new"));
}

} // namespace
} // namespace paperline
