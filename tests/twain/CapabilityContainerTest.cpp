#include "twain/CapabilityContainer.h"

#include "twain/records/TwainConstants.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <vector>

namespace paperline {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

void* noMemory(size_t) {
    return nullptr;
}

std::vector<uint8_t> bytesOf(const CapabilityContainer& container) {
    return {container.view().begin(), container.view().end()};
}

TEST(CapabilityItemSize, FollowsTheTableOfTheThirteenTypes) {
    std::vector<uint32_t> sizes;
    for (uint16_t type = 0; type <= 12; ++type)
        sizes.push_back(twain::capabilityItemSize(type));
    EXPECT_THAT(sizes, ElementsAre(1, 2, 4, 1, 2, 4, 2, 4, 16, 34, 66, 130, 256));
}

TEST(CapabilityItemSize, CountsNothingForHigherTypes) {
    EXPECT_EQ(twain::capabilityItemSize(13), 0U);
    EXPECT_EQ(twain::capabilityItemSize(twain::TWTY_HANDLE), 0U);
    EXPECT_EQ(twain::capabilityItemSize(0xffff), 0U);
}

TEST(OneValueContainer, PutsTheItemAtByteFour) {
    CapabilityContainer container;
    ASSERT_EQ(buildOneValue(container, {.itemType = 4, .item = 0x04030201}), 0);
    EXPECT_EQ(container.containerType, 5);
    EXPECT_THAT(bytesOf(container), ElementsAre(4, 0, 0, 0, 1, 2, 3, 4));
}

TEST(RangeContainer, HoldsFiveNumbersAfterTheType) {
    CapabilityContainer container;
    const ValueRange range{.itemType = 7,
                           .minValue = 1,
                           .maxValue = 2,
                           .stepSize = 3,
                           .defaultValue = 4,
                           .currentValue = 5};
    ASSERT_EQ(buildRange(container, range), 0);
    EXPECT_EQ(container.containerType, 6);
    EXPECT_THAT(bytesOf(container), ElementsAreArray({7, 0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0,
                                                      3, 0, 0, 0, 4, 0, 0, 0, 5, 0, 0, 0}));
}

TEST(EnumerationContainer, StartsItsItemsAtByteSixteenAndHoldsTwentyMore) {
    CapabilityContainer container;
    const std::array<uint8_t, 4> items{0x2c, 0x01, 0x58, 0x02};
    const EnumerationHeader header{
        .itemType = 4, .numItems = 2, .currentIndex = 1, .defaultIndex = 0};
    ASSERT_EQ(buildEnumeration(container, header, items), 0);
    EXPECT_EQ(container.containerType, 4);
    EXPECT_THAT(bytesOf(container),
                ElementsAreArray({4, 0, 0, 0, 2,    0,    0,    0,    1, 0, 0, 0,
                                  0, 0, 0, 0, 0x2c, 0x01, 0x58, 0x02, 0, 0, 0, 0}));
}

TEST(ArrayContainer, StartsItsItemsAtByteEightAndHoldsTwelveMore) {
    CapabilityContainer container;
    const std::array<uint8_t, 3> items{7, 8, 9};
    ASSERT_EQ(buildArray(container, {.itemType = 3, .numItems = 3}, items), 0);
    EXPECT_EQ(container.containerType, 3);
    EXPECT_THAT(bytesOf(container),
                ElementsAreArray({3, 0, 0, 0, 3, 0, 0, 0, 7, 8, 9, 0, 0, 0, 0}));
}

TEST(ContainerBuilders, AnswerThatMemoryIsMissing) {
    CapabilityContainer container;
    const std::array<uint8_t, 1> items{1};
    EXPECT_EQ(buildOneValue(container, {}, noMemory), -108);
    EXPECT_EQ(buildRange(container, {}, noMemory), -108);
    EXPECT_EQ(buildEnumeration(container, {.itemType = 0, .numItems = 1}, items, noMemory), -108);
    EXPECT_EQ(buildArray(container, {.itemType = 0, .numItems = 1}, items, noMemory), -108);
    EXPECT_EQ(container.bytes, nullptr);
}

TEST(ContainerBuilders, RefuseItemsThatAreNotAsManyAsTheHeaderSays) {
    CapabilityContainer container;
    const std::array<uint8_t, 3> items{1, 2, 3};
    EXPECT_EQ(buildArray(container, {.itemType = 4, .numItems = 2}, items), -50);
    EXPECT_EQ(buildEnumeration(container, {.itemType = 4, .numItems = 0xffffffff}, items), -50);
}

TEST(ContainerReaders, RefuseAnotherContainerType) {
    CapabilityContainer container;
    ASSERT_EQ(buildOneValue(container, {.itemType = 4, .item = 1}), 0);
    ValueRange range;
    EnumerationHeader enumeration;
    ArrayHeader array;
    EXPECT_EQ(readRange(container, range, AfterReading::freeBuffer), -50);
    EXPECT_EQ(readEnumeration(container, enumeration, {}, AfterReading::freeBuffer), -50);
    EXPECT_EQ(readArray(container, array, {}, AfterReading::freeBuffer), -50);
    EXPECT_NE(container.bytes, nullptr);
    CapabilityContainer rangeContainer;
    ASSERT_EQ(buildRange(rangeContainer, {}), 0);
    OneValue value;
    EXPECT_EQ(readOneValue(rangeContainer, value, AfterReading::freeBuffer), -50);
}

TEST(ContainerReaders, GiveBackWhatWasBuilt) {
    CapabilityContainer container;
    OneValue value;
    ASSERT_EQ(buildOneValue(container, {.itemType = 6, .item = 1}), 0);
    ASSERT_EQ(readOneValue(container, value, AfterReading::keepBuffer), 0);
    EXPECT_EQ(value.itemType, 6);
    EXPECT_EQ(value.item, 1U);

    ValueRange range;
    ASSERT_EQ(buildRange(container,
                         {.itemType = 7,
                          .minValue = 50,
                          .maxValue = 600,
                          .stepSize = 1,
                          .defaultValue = 300,
                          .currentValue = 200}),
              0);
    ASSERT_EQ(readRange(container, range, AfterReading::keepBuffer), 0);
    EXPECT_EQ(range.minValue, 50U);
    EXPECT_EQ(range.maxValue, 600U);
    EXPECT_EQ(range.stepSize, 1U);
    EXPECT_EQ(range.defaultValue, 300U);
    EXPECT_EQ(range.currentValue, 200U);
}

TEST(ContainerReaders, CopyItemsIntoTheCallersBuffer) {
    CapabilityContainer container;
    const std::array<uint8_t, 4> items{1, 2, 3, 4};
    ASSERT_EQ(buildEnumeration(container,
                               {.itemType = 4, .numItems = 2, .currentIndex = 1, .defaultIndex = 1},
                               items),
              0);
    std::array<uint8_t, 5> read{};
    EnumerationHeader header;
    ASSERT_EQ(readEnumeration(container, header, read, AfterReading::keepBuffer), 0);
    EXPECT_EQ(header.numItems, 2U);
    EXPECT_EQ(header.currentIndex, 1U);
    EXPECT_EQ(header.defaultIndex, 1U);
    EXPECT_THAT(read, ElementsAre(1, 2, 3, 4, 0));
}

TEST(ContainerReaders, RefuseABufferSmallerThanSizeTimesCount) {
    CapabilityContainer container;
    const std::array<uint8_t, 4> items{1, 2, 3, 4};
    ASSERT_EQ(buildArray(container, {.itemType = 4, .numItems = 2}, items), 0);
    std::array<uint8_t, 3> tooSmall{};
    ArrayHeader header;
    EXPECT_EQ(readArray(container, header, tooSmall, AfterReading::freeBuffer), -50);
    EXPECT_THAT(tooSmall, Each(0));
    EXPECT_NE(container.bytes, nullptr);
    std::array<uint8_t, 4> exact{};
    EXPECT_EQ(readArray(container, header, exact, AfterReading::keepBuffer), 0);
    EXPECT_THAT(exact, ElementsAre(1, 2, 3, 4));
}

TEST(ContainerReaders, RefuseACountThatTheContainerDoesNotHold) {
    CapabilityContainer container;
    const std::array<uint8_t, 4> items{1, 2, 3, 4};
    ASSERT_EQ(buildArray(container, {.itemType = 4, .numItems = 2}, items), 0);
    container.bytes[4] = 100; // the count, behind the builder's back
    std::vector<uint8_t> large(1024);
    ArrayHeader header;
    EXPECT_EQ(readArray(container, header, large, AfterReading::keepBuffer), -50);
}

TEST(ContainerReaders, FreeTheBufferOnlyWhenAsked) {
    CapabilityContainer container;
    OneValue value;
    ASSERT_EQ(buildOneValue(container, {.itemType = 4, .item = 9}), 0);
    ASSERT_EQ(readOneValue(container, value, AfterReading::keepBuffer), 0);
    EXPECT_NE(container.bytes, nullptr);
    ASSERT_EQ(readOneValue(container, value, AfterReading::freeBuffer), 0);
    EXPECT_EQ(container.bytes, nullptr);
    EXPECT_EQ(readOneValue(container, value, AfterReading::freeBuffer), -50);
}

} // namespace
} // namespace paperline
