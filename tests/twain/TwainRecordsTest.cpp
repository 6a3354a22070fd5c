#include "controller/TwainInfo.h"

#include <gtest/gtest.h>

#include <cstring>

namespace paperline {
namespace {

TW_IDENTITY identity(std::string_view maker, std::string_view family, std::string_view product) {
    TW_IDENTITY identity{};
    identity.Id = 77;
    identity.Version = {2, 5, 13, 1, TW_STR32::from("2.5 beta")};
    identity.ProtocolMajor = 2;
    identity.ProtocolMinor = 4;
    identity.SupportedGroups = 0x40000003;
    identity.Manufacturer = TW_STR32::from(maker);
    identity.ProductFamily = TW_STR32::from(family);
    identity.ProductName = TW_STR32::from(product);
    return identity;
}

TEST(TwainInfoRecord, KeepsNumbersWithTheLowHalfOfTheGroups) {
    const TWAIN_INFO info = TWAIN_INFO::from(identity("Maker", "Family", "Product"));
    EXPECT_EQ(info.reserved, 0);
    EXPECT_EQ(info.majorNum, 2);
    EXPECT_EQ(info.minorNum, 5);
    EXPECT_EQ(info.language, 13);
    EXPECT_EQ(info.country, 1);
    EXPECT_EQ(info.protocolMajor, 2);
    EXPECT_EQ(info.protocolMinor, 4);
    EXPECT_EQ(info.supportedGroups, 3);
}

TEST(TwainInfoRecord, KeepsTwoStringsRawAndTwoZeroTerminated) {
    const TWAIN_INFO info = TWAIN_INFO::from(identity("Maker", "Family", "Product"));
    EXPECT_EQ(std::memcmp(info.versionInfo.data(),
                          "\x08"
                          "2.5 beta\0",
                          10),
              0);
    EXPECT_EQ(std::memcmp(info.manufacturer.data(),
                          "\x05"
                          "Maker\0",
                          7),
              0);
    EXPECT_STREQ(info.productFamily.data(), "Family");
    EXPECT_STREQ(info.productName.data(), "Product");
    EXPECT_EQ(sizeof(TWAIN_INFO), 16U + 4U * 256U);
}

TEST(TwainInfoRecord, ReadsBackItsTexts) {
    const TWAIN_INFO info = TWAIN_INFO::from(identity("Maker", "Family", "Product"));
    EXPECT_EQ(info.manufacturerText(), "Maker");
    EXPECT_EQ(info.productFamilyText(), "Family");
    EXPECT_EQ(info.productNameText(), "Product");
}

TEST(TwainInfoRecord, SurvivesALengthByteBeyondTheField) {
    TW_IDENTITY liar = identity("Maker", "Family", "Product");
    liar.Manufacturer.bytes.fill('x');
    liar.ProductName.bytes.fill('y');
    const TWAIN_INFO info = TWAIN_INFO::from(liar);
    EXPECT_EQ(info.manufacturerText(), std::string(33, 'x'));
    EXPECT_EQ(info.productNameText(), std::string(33, 'y'));
}

} // namespace
} // namespace paperline
