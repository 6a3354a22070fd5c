#include "platform/process/ProcessLife.h"

#include <gtest/gtest.h>

#include <csignal>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace paperline {
namespace {

TEST(ProcessLife, EndsBeforeItsEndIsNoticed) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::prctl(PR_SET_NAME, "a) R (b");
        ::pause();
        ::_exit(0);
    }
    ASSERT_GT(child, 0);
    EXPECT_TRUE(processRuns(child));
    ::kill(child, SIGKILL);
    siginfo_t end{};
    ASSERT_EQ(::waitid(P_PID, static_cast<id_t>(child), &end, WEXITED | WNOWAIT), 0);
    EXPECT_EQ(::kill(child, 0), 0) << "its number is free already";
    EXPECT_FALSE(processRuns(child));
    ASSERT_EQ(::waitpid(child, nullptr, 0), child);
    EXPECT_FALSE(processRuns(child));
}

TEST(ProcessLife, SeesProcessesOfOthers) {
    EXPECT_TRUE(processRuns(1));
    EXPECT_TRUE(processRuns(::getpid()));
}

} // namespace
} // namespace paperline
