#include "platform/places/ProcessScratch.h"

#include "platform/files/Files.h"
#include "tests/support/FileTesting.h"

#include <sys/stat.h>
#include <sys/wait.h>

namespace paperline {
namespace {

using namespace testing_support;

class ProcessScratchFolders : public testing::Test {
protected:
    std::string make() {
        std::string error;
        std::optional<ProcessScratch> made = makeProcessScratch(folder_.path(), error);
        EXPECT_TRUE(made) << error;
        return made ? made->folder : std::string();
    }
    std::vector<std::string> taken() {
        std::vector<std::string> folders;
        for (const ProcessScratch& scratch : takeAbandonedScratch(folder_.path()))
            folders.push_back(scratch.folder);
        return folders;
    }
    TestFolder folder_;
};

TEST_F(ProcessScratchFolders, ArePrivate) {
    struct stat status = {};
    ASSERT_EQ(::stat(make().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0700U);
}

TEST_F(ProcessScratchFolders, BelongToOneWhileHeLives) {
    std::string error;
    const std::optional<ProcessScratch> own = makeProcessScratch(folder_.path(), error);
    ASSERT_TRUE(own) << error;
    EXPECT_TRUE(taken().empty());
}

TEST_F(ProcessScratchFolders, AreFreeWhenTheProcessWasKilled) {
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        std::string error;
        const auto own = makeProcessScratch(folder_.path(), error);
        (void)!::write(ready[1], own ? "y" : "n", 1);
        ::pause();
        ::_exit(0);
    }
    char answer = 0;
    ASSERT_EQ(::read(ready[0], &answer, 1), 1);
    ASSERT_EQ(answer, 'y');
    EXPECT_TRUE(taken().empty());
    ::kill(child, SIGKILL);
    ASSERT_EQ(::waitpid(child, nullptr, 0), child);
    ::close(ready[0]);
    ::close(ready[1]);
    const auto scratch = takeAbandonedScratch(folder_.path());
    ASSERT_EQ(scratch.size(), 1U);
    EXPECT_TRUE(taken().empty()) << "one taker at a time";
}

TEST_F(ProcessScratchFolders, AreNotThoseOfOthers) {
    const std::string own = make();
    ASSERT_TRUE(createFolder(folder_ / "paperline-making")); // no lock in it yet
    ASSERT_TRUE(createFolder(folder_ / "other"));
    ASSERT_TRUE(put(folder_ / "other/lock", ""));
    ASSERT_TRUE(put(folder_ / "paperline-file", ""));
    ASSERT_EQ(::symlink(own.c_str(), (folder_ / "paperline-link").c_str()), 0);
    const std::string open = make();
    ASSERT_EQ(::chmod(open.c_str(), 0755), 0); // anyone could have laid out its pages
    EXPECT_EQ(taken(), std::vector<std::string>{own});
    asAnotherUsers(own, [&] { EXPECT_TRUE(taken().empty()); });
}

TEST_F(ProcessScratchFolders, SayWhyTheyCannotBeMade) {
    std::string error;
    EXPECT_FALSE(makeProcessScratch(folder_ / "missing", error));
    EXPECT_NE(error.find(folder_ / "missing"), std::string::npos) << error;
}

} // namespace
} // namespace paperline
