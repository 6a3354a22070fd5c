#include "output/NameTemplate.h"

#include <gtest/gtest.h>

#include <map>

namespace paperline {
namespace {

constexpr double now = 1768573530; // 2026-01-16 14:25:30 UTC

// Answers as the platform does for 16 January 2026, 14:25:30, and counts what it is asked.
struct FormatterScript {
    std::map<std::string, std::string> values{{"YYYYMMdd", "20260116"},
                                              {"YYYY", "2026"},
                                              {"M", "1"},
                                              {"MM", "01"},
                                              {"dd", "16"},
                                              {"HHmmss", "142530"},
                                              {"HH", "14"},
                                              {"mm", "25"},
                                              {"ss", "30"}};
    std::map<std::string, double> asked;

    DateFormatter formatter() {
        return [this](double seconds, const std::string& pattern) {
            asked[pattern] = seconds;
            return values.at(pattern);
        };
    }
};

std::string first(const std::string& text) {
    FormatterScript script;
    return expandFirstToken(text, now, script.formatter());
}

std::string all(const std::string& text) {
    FormatterScript script;
    return expandAllTokens(text, now, script.formatter());
}

TEST(NameTemplate, ExpandsEachTokenByItsPattern) {
    EXPECT_EQ(first("%YYYYMMDD"), "20260116");
    EXPECT_EQ(first("%YYYY"), "2026");
    EXPECT_EQ(first("%MMM"), "JAN");
    EXPECT_EQ(first("%MM"), "01");
    EXPECT_EQ(first("%DD"), "16");
    EXPECT_EQ(first("%HHNNSS"), "142530");
    EXPECT_EQ(first("%HH"), "14");
    EXPECT_EQ(first("%NN"), "25");
    EXPECT_EQ(first("%SS"), "30");
}

TEST(NameTemplate, ExpandsOnlyTheFirstKindFoundAtAllItsPlaces) {
    EXPECT_EQ(first("%YYYYMMDD_%HHNNSS"), "20260116_%HHNNSS");
    EXPECT_EQ(first("%HHNNSS_%YYYYMMDD"), "%HHNNSS_20260116");
    EXPECT_EQ(first("a%DDb%DDc"), "a16b16c");
    EXPECT_EQ(first("%SS%NN"), "%SS25");
}

TEST(NameTemplate, ATokenInAnotherCaseEndsTheExpansionUnchanged) {
    EXPECT_EQ(first("%yyyy_scan"), "%yyyy_scan");
    EXPECT_EQ(first("%yyyy_%HH"), "%yyyy_%HH");
    EXPECT_EQ(first("%dd%DD"), "%dd16");
}

TEST(NameTemplate, LeavesANameWithoutTokensAlone) {
    EXPECT_EQ(first("Image"), "Image");
    EXPECT_EQ(first(""), "");
    EXPECT_EQ(first("100%"), "100%");
    EXPECT_EQ(first("%M"), "%M");
}

TEST(NameTemplate, TheMonthsNameLooksOneHourAhead) {
    FormatterScript script;
    (void)expandFirstToken("%MMM", now, script.formatter());
    EXPECT_EQ(script.asked.at("M"), now + 3600);
    (void)expandFirstToken("%MM", now, script.formatter());
    EXPECT_EQ(script.asked.at("MM"), now);
}

TEST(NameTemplate, MonthNumbersBeyondTheTableAreJanuary) {
    const std::map<std::string, std::string> names{{"1", "JAN"},
                                                   {"2", "FEB"},
                                                   {"3", "MAR"},
                                                   {"4", "APR"},
                                                   {"5", "MAY"},
                                                   {"6", "JUN"},
                                                   {"7", "JUL"},
                                                   {"8", "AUG"},
                                                   {"9", "SEP"},
                                                   {"10", "OCT"},
                                                   {"11", "NOV"},
                                                   {"12", "DEC"},
                                                   {"13", "JAN"},
                                                   {"0", "JAN"},
                                                   {"", "JAN"},
                                                   {"x", "JAN"}};
    for (const auto& [number, name] : names) {
        FormatterScript script;
        script.values["M"] = number;
        EXPECT_EQ(expandFirstToken("%MMM", now, script.formatter()), name) << number;
    }
}

TEST(NameTemplate, AllTokensAtOnceWithTheLongerOnesFirst) {
    EXPECT_EQ(all("%YYYYMMDD_%HHNNSS"), "20260116_142530");
    EXPECT_EQ(all("%YYYY-%MMM-%MM-%DD %HH.%NN.%SS"), "2026-JAN-01-16 14.25.30");
    EXPECT_EQ(all("%yyyy %DD"), "%yyyy 16");
    EXPECT_EQ(all("%SS%SS"), "3030");
}

TEST(NameTemplate, ContainsDisregardsCase) {
    EXPECT_TRUE(containsIgnoringCase("%YYYY", "x%yYyY"));
    EXPECT_TRUE(containsIgnoringCase("a", "A"));
    EXPECT_FALSE(containsIgnoringCase("%YYYY", "%YYY"));
    EXPECT_FALSE(containsIgnoringCase("", "x"));
    EXPECT_FALSE(containsIgnoringCase("x", ""));
    EXPECT_FALSE(containsIgnoringCase("[", "{")); // 0x20 apart, but no letters
}

} // namespace
} // namespace paperline
