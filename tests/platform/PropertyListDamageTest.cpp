// Binary lists byte by byte, and thousands of damaged files of both forms.
#include "platform/plist/PropertyList.h"

#include "tests/support/FileTesting.h"

#include <gtest/gtest.h>
#include <random>

namespace paperline {
namespace {

using namespace testing_support;
using Bytes = std::vector<uint8_t>;

// A binary list of the objects given, the first one its root; one-byte offsets and references.
Bytes binaryList(const std::vector<Bytes>& objects) {
    Bytes file = bytesOf("bplist00");
    Bytes offsets;
    for (const Bytes& object : objects) {
        offsets.push_back(static_cast<uint8_t>(file.size()));
        file.insert(file.end(), object.begin(), object.end());
    }
    const auto table = static_cast<uint8_t>(file.size());
    file.insert(file.end(), offsets.begin(), offsets.end());
    const Bytes trailer{
        0, 0, 0, 0, 0, 0, 1, 1, 0, 0, 0, 0, 0, 0, 0, static_cast<uint8_t>(objects.size()),
        0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, table};
    file.insert(file.end(), trailer.begin(), trailer.end());
    return file;
}

// A dictionary with "a" and the object given.
std::optional<PropertyListValue> valueInBinary(const Bytes& object) {
    const auto root = parsePropertyList(binaryList({{0xD1, 1, 2}, {0x51, 'a'}, object}));
    const PropertyListValue* value = root ? find(*root, "a") : nullptr;
    return value != nullptr ? std::optional(*value) : std::nullopt;
}

TEST(PropertyListBinary, IsReadWithEveryType) {
    EXPECT_EQ(valueInBinary({0x09}), PropertyListValue(true));
    EXPECT_EQ(valueInBinary({0x08}), PropertyListValue(false));
    EXPECT_EQ(valueInBinary({0x10, 200}), PropertyListValue(int64_t{200}));
    EXPECT_EQ(valueInBinary({0x11, 1, 2}), PropertyListValue(int64_t{258}));
    EXPECT_EQ(valueInBinary({0x13, 255, 255, 255, 255, 255, 255, 255, 251}),
              PropertyListValue(int64_t{-5}));
    EXPECT_EQ(valueInBinary({0x14, 0, 0, 0, 0, 0, 0, 0, 0, 255, 255, 255, 255, 255, 255, 255, 255}),
              PropertyListValue(UINT64_MAX));
    EXPECT_EQ(valueInBinary({0x23, 0x3F, 0xD0, 0, 0, 0, 0, 0, 0}),
              PropertyListValue(PropertyListOther{"real", "0.25"}));
    EXPECT_EQ(valueInBinary({0x33, 0x41, 0, 0, 0, 0, 0, 0, 0}),
              PropertyListValue(PropertyListOther{"date", "2001-01-02T12:24:32Z"}));
    EXPECT_EQ(valueInBinary({0x43, 0, 1, 2}), PropertyListValue(PropertyListOther{"data", "AAEC"}));
    EXPECT_EQ(valueInBinary({0x22, 0x3E, 0x80, 0, 0}),
              PropertyListValue(PropertyListOther{"real", "0.25"}));
    EXPECT_EQ(valueInBinary({0x41, 255}), PropertyListValue(PropertyListOther{"data", "/w=="}));
    EXPECT_EQ(valueInBinary({0x42, 0, 1}), PropertyListValue(PropertyListOther{"data", "AAE="}));
    EXPECT_EQ(valueInBinary({0x53, 'a', 'b', 'c'}), PropertyListValue("abc"));
    EXPECT_EQ(valueInBinary({0x62, 0x00, 0xE4, 0x20, 0xAC}),
              PropertyListValue("\xC3\xA4\xE2\x82\xAC"));
    EXPECT_EQ(valueInBinary({0x5F, 0x10, 2, 'a', 'b'}), PropertyListValue("ab"));
    EXPECT_EQ(valueInBinary({0xA0}), PropertyListValue(PropertyListArray{}));
    EXPECT_EQ(valueInBinary({0xD0}), PropertyListValue(PropertyListDictionary{}));
    EXPECT_EQ(valueInBinary({0x80, 7}),
              PropertyListValue(PropertyListDictionary{{"CF$UID", PropertyListValue(int64_t{7})}}));
}

TEST(PropertyListBinary, RefusesUnsoundObjects) {
    const std::vector<Bytes> objects{
        {0x00},                                                       // null
        {0x0F},                                                       // fill
        {0x13, 1, 2},                                                 // cut short
        {0x14, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},       // beyond 64 bits
        {0x15},                                                       // 32 bytes wide
        {0x21, 0, 0},                                                 // two-byte real
        {0x33, 0x7F, 0xF8, 0, 0, 0, 0, 0, 0},                         // no date
        {0x33, 0x7F, 0xEF, 0, 0, 0, 0, 0, 0},                         // far beyond the year 9999
        {0x54, 'a', 0, 'b', 'c'},                                     // zero byte
        {0x51, 0xE4},                                                 // not ASCII
        {0x61, 0xD8, 0x00},                                           // half a pair
        {0x61, 0x00, 0x00},                                           // zero
        {0x5F, 0x13, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, // endless
        {0x5F, 0x53, 'a', 'b', 'c'},                                  // the count is no integer
        {0xA1, 99},                                                   // no such object
        {0xA1, 2},                                                    // holds itself
        {0xA1, 0},                                                    // holds its parent
        {0xD1, 2, 1},                                                 // key is a dictionary
        {0xC1, 1},                                                    // a set
        {0x82, 1, 2, 3},                                              // three-byte reference
    };
    for (const Bytes& object : objects)
        EXPECT_FALSE(valueInBinary(object).has_value()) << int{object[0]} << " " << object.size();
}

TEST(PropertyListBinary, BoundsSharedObjects) {
    // Each array holds the next one fourteen times: 14^12 values in a file of 300 bytes.
    std::vector<Bytes> objects{{0xD1, 1, 2}, {0x51, 'a'}};
    for (uint8_t level = 0; level < 12; ++level) {
        Bytes array{0xAE};
        array.insert(array.end(), 14, static_cast<uint8_t>(level + 3));
        objects.push_back(array);
    }
    objects.push_back({0x09});
    EXPECT_FALSE(parsePropertyList(binaryList(objects)).has_value());
}

TEST(PropertyListBinary, RefusesUnsoundTrailers) {
    const Bytes good = binaryList({{0xD1, 1, 2}, {0x51, 'a'}, {0x09}});
    ASSERT_TRUE(parsePropertyList(good).has_value());
    const size_t trailer = good.size() - 32;
    for (const size_t at : {6U, 7U, 8U, 15U, 16U, 23U, 24U, 31U})
        for (const uint8_t value : {uint8_t{0}, uint8_t{9}, uint8_t{127}, uint8_t{255}}) {
            Bytes bad = good;
            if (bad[trailer + at] == value)
                continue;
            bad[trailer + at] = value;
            EXPECT_FALSE(parsePropertyList(bad).has_value()) << at << " " << int{value};
        }
    for (size_t length = 0; length < good.size(); ++length)
        EXPECT_FALSE(
            parsePropertyList(Bytes(good.begin(), good.begin() + static_cast<ptrdiff_t>(length)))
                .has_value());
}

Bytes mutated(const Bytes& seed, std::mt19937& random) {
    Bytes bytes = seed;
    const auto any = [&random](size_t below) {
        return std::uniform_int_distribution<size_t>(0, below - 1)(random);
    };
    const size_t changes = 1 + any(4);
    for (size_t change = 0; change < changes && !bytes.empty(); ++change) {
        const auto at = static_cast<ptrdiff_t>(any(bytes.size()));
        switch (any(5)) {
        case 0:
            bytes[static_cast<size_t>(at)] = static_cast<uint8_t>(any(256));
            break;
        case 1:
            bytes[static_cast<size_t>(at)] ^= static_cast<uint8_t>(1U << any(8));
            break;
        case 2:
            bytes.erase(bytes.begin() + at);
            break;
        case 3:
            bytes.insert(bytes.begin() + at, static_cast<uint8_t>(any(3) == 0 ? 0 : any(256)));
            break;
        default:
            bytes.resize(static_cast<size_t>(at));
        }
    }
    return bytes;
}

// In a child, so that a crash is one failed test.
void survivesMutations(const Bytes& seed, unsigned count) {
    ASSERT_TRUE(parsePropertyList(seed).has_value());
    inChild([&] {
        std::mt19937 random(20260116);
        unsigned read = 0;
        for (unsigned index = 0; index < count; ++index) {
            const auto root = parsePropertyList(mutated(seed, random));
            if (!root)
                continue;
            ++read;
            // What was read can be written, and is then the same.
            const auto written = serialisePropertyList(*root);
            ASSERT_TRUE(written.has_value());
            const auto again = parsePropertyList(*written);
            ASSERT_TRUE(again.has_value());
        }
        // Some must be read, and some refused.
        EXPECT_GT(read, count / 100);
        EXPECT_LT(read, count);
    });
}

const char* const everyType =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n"
    "<key>ScannerName</key><string>Hastell &amp; \xC3\x84 &#x41;</string>\n"
    "<key>Language</key><integer>-12</integer><key>Real</key><real>1.25e-3</real>\n"
    "<key>Date</key><date>2026-01-16T14:25:30Z</date><key>Data</key><data>AAECAw==</data>\n"
    "<key>user</key><dict><key>Product</key><dict><key>SavePath</key><string>/x</string>"
    "<key>List</key><array><true/><false/></array></dict></dict>\n</dict>\n</plist>\n";

TEST(DamagedPropertyLists, NeverEndTheProcessInXml) {
    survivesMutations(bytesOf(everyType), 4000);
}

TEST(DamagedPropertyLists, NeverEndTheProcessInBinary) {
    survivesMutations(binaryList({{0xD5, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10},
                                  {0x51, 'a'},
                                  {0x52, 'b', 'c'},
                                  {0x61, 0, 0xE4},
                                  {0x51, 'd'},
                                  {0x51, 'e'},
                                  {0x53, 'x', 'y', 'z'},
                                  {0x13, 255, 255, 255, 255, 255, 255, 255, 251},
                                  {0x33, 0x41, 0xC0, 0, 0, 0, 0, 0, 0},
                                  {0xA2, 6, 7},
                                  {0xD1, 1, 11},
                                  {0x44, 0, 1, 2, 3}}),
                      4000);
}

} // namespace
} // namespace paperline
