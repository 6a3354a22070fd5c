// How faults are written, and that the guide names each of them.
#include "tests/sources/faulty/Fault.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace paperline::sources {

TEST(FaultList, NamesPlacesAndValues) {
    const auto faults = FaultList::parse("strip-fail@2:20, info-width@last:-5,,callback-never");
    ASSERT_TRUE(faults);
    EXPECT_EQ(faults->find("strip-fail", 1, 3), nullptr);
    const Fault* strip = faults->find("strip-fail", 2, 3);
    ASSERT_NE(strip, nullptr);
    EXPECT_EQ(strip->value, 20);
    EXPECT_EQ(faults->find("info-width", 3, 3)->value, -5);
    EXPECT_EQ(faults->find("info-width", 2, 3), nullptr);
    EXPECT_NE(faults->find("callback-never", 1, 1), nullptr);
    EXPECT_EQ(faults->find("callback-never", 1, 1)->value, std::nullopt);
    EXPECT_EQ(faults->find("callback-never", 0, 1), nullptr) << "opening is no page";
}

TEST(FaultList, FirstMiddleLastAndOpening) {
    const auto faults =
        FaultList::parse("end-fail@first,end-hang@middle,end-cancel@last,device-jam@0");
    ASSERT_TRUE(faults);
    for (const int count : {1, 2, 3, 10}) {
        for (int page = 1; page <= count; ++page) {
            EXPECT_EQ(faults->find("end-fail", page, count) != nullptr, page == 1);
            EXPECT_EQ(faults->find("end-cancel", page, count) != nullptr, page == count);
            EXPECT_EQ(faults->find("end-hang", page, count) != nullptr, page == (count + 1) / 2);
            EXPECT_EQ(faults->find("device-jam", page, count), nullptr);
        }
        EXPECT_NE(faults->find("device-jam", 0, count), nullptr);
    }
}

TEST(FaultList, WhatIsWrittenWronglyIsRefused) {
    for (const char* text : {"nonsense",
                             "strip-",
                             "-fail",
                             "strip-fail@",
                             "strip-fail@two",
                             "strip-fail@-1",
                             "strip-fail:",
                             "strip-fail:x",
                             "strip-fail:1x",
                             "callback-never-fail",
                             "strip-fail@1@2",
                             "strip-fail:99999999999999999999"})
        EXPECT_FALSE(FaultList::parse(text)) << text;
    EXPECT_TRUE(FaultList::parse(""));
    EXPECT_TRUE(FaultList::parse(" , "));
}

TEST(FaultList, TheGuideNamesEveryFault) {
    std::ifstream file(FAULTY_GUIDE);
    const std::string guide{std::istreambuf_iterator<char>(file), {}};
    ASSERT_FALSE(guide.empty());
    for (const auto names : {sourceFaults(), deviceFaults()})
        for (const std::string_view name : names)
            EXPECT_NE(guide.find("`" + std::string(name)), std::string::npos) << name;
    for (const std::string_view triplet : faultyTriplets())
        EXPECT_NE(guide.find("`" + std::string(triplet) + "`"), std::string::npos) << triplet;
}

} // namespace paperline::sources
