#include "platform/qt/EndingSignals.h"

#include "platform/desktop/MainLoop.h"

#include "QtTestSupport.h"

#include <csignal>

#include <gtest/gtest.h>

namespace paperline {
namespace {

using namespace testing_support;

class EndingSignalsTest : public testing::Test {
protected:
    EndingSignalsTest() {
        for (const int number : {SIGTERM, SIGINT, SIGHUP})
            std::signal(number, SIG_DFL); // whoever started the tests may ignore some
    }
    ~EndingSignalsTest() override { resetTerminationRequest(); }
};

TEST_F(EndingSignalsTest, AskForTheNormalEnd) {
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        const EndingSignals heard;
        EXPECT_FALSE(endingSignalHasCome());
        std::raise(number);
        EXPECT_TRUE(endingSignalHasCome()) << number;
        EXPECT_FALSE(terminationRequested()) << "nothing happens inside the handler";
        EXPECT_TRUE(turnUntil([] { return terminationRequested(); })) << number;
        resetTerminationRequest();
    }
}

TEST_F(EndingSignalsTest, LeaveIgnoredOnesIgnored) {
    std::signal(SIGHUP, SIG_IGN);
    {
        const EndingSignals heard;
        std::raise(SIGHUP);
        EXPECT_FALSE(endingSignalHasCome());
    }
    EXPECT_EQ(std::signal(SIGHUP, SIG_DFL), SIG_IGN);
}

TEST_F(EndingSignalsTest, GiveTheSystemsHandlersBack) {
    { const EndingSignals heard; }
    EXPECT_EQ(std::signal(SIGTERM, SIG_DFL), SIG_DFL);
}

} // namespace
} // namespace paperline
