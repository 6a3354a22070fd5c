#include "output/PageJoining.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace paperline {
namespace {

using Names = std::vector<std::string>;

class ScriptedJoiner : public PageJoiner {
public:
    using Script = std::function<Added(const std::string& pageFile, int attempt)>;
    explicit ScriptedJoiner(Script script) : script_(std::move(script)) {}
    Added add(const std::string& pageFile) override {
        const Added result = script_(pageFile, ++attempts);
        if (result == Added::yes)
            added.push_back(pageFile);
        return result;
    }
    bool finish() override { return true; }

    int attempts = 0;
    Names added;

private:
    Script script_;
};

TEST(PageJoining, NamesAreSortedAsPlainText) {
    EXPECT_EQ(sortedNames({"Image_00010.tif", "Image_00002.tif", "Image_00001.tif"}),
              (Names{"Image_00001.tif", "Image_00002.tif", "Image_00010.tif"}));
    EXPECT_EQ(sortedNames({"b", "a", "B", "a10", "a2"}), (Names{"B", "a", "a10", "a2", "b"}));
    // Beyond five digits the order of the text is no longer the order of the pages.
    EXPECT_EQ(sortedNames({"Image_99999.tif", "Image_100000.tif"}),
              (Names{"Image_100000.tif", "Image_99999.tif"}));
    EXPECT_TRUE(sortedNames({}).empty());
}

TEST(PageJoining, AnEntryThatFailsAThousandTimesIsStillJoinedInItsPlace) {
    ScriptedJoiner joiner([](const std::string& file, int attempt) {
        return file == "/s/2" && attempt <= 1001 ? PageJoiner::Added::unreadable
                                                 : PageJoiner::Added::yes;
    });
    EXPECT_EQ(joinPages(joiner, "/s", {"1", "2", "3"}, UnreadablePages::retried), Names{});
    EXPECT_EQ(joiner.attempts, 1003);
    EXPECT_EQ(joiner.added, (Names{"/s/1", "/s/2", "/s/3"}));
}

TEST(PageJoining, RetryingWaitsLongBeforeItGivesNothingUp) {
    ScriptedJoiner joiner([](const std::string&, int attempt) {
        return attempt <= 10005 ? PageJoiner::Added::unreadable : PageJoiner::Added::yes;
    });
    EXPECT_EQ(joinPages(joiner, "/s", {"1"}, UnreadablePages::retried), Names{});
    EXPECT_EQ(joiner.attempts, 10006);
}

TEST(PageJoining, SkippingLeavesUnreadableEntriesOut) {
    ScriptedJoiner joiner([](const std::string& file, int) {
        return file == "/s/2" ? PageJoiner::Added::unreadable : PageJoiner::Added::yes;
    });
    EXPECT_EQ(joinPages(joiner, "/s", {"1", "2", "3"}, UnreadablePages::leftOut), Names{"2"});
    EXPECT_EQ(joiner.added, (Names{"/s/1", "/s/3"}));
    EXPECT_EQ(joiner.attempts, 3);
}

TEST(PageJoining, AFailedOutputEndsBoth) {
    const auto failsAtTwo = [](const std::string& file, int) {
        return file == "/s/2" ? PageJoiner::Added::outputFailed : PageJoiner::Added::yes;
    };
    for (const UnreadablePages unreadable : {UnreadablePages::retried, UnreadablePages::leftOut}) {
        ScriptedJoiner joiner(failsAtTwo);
        EXPECT_FALSE(joinPages(joiner, "/s", {"1", "2", "3"}, unreadable).has_value());
        EXPECT_EQ(joiner.attempts, 2);
    }
}

} // namespace
} // namespace paperline
