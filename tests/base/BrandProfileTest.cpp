#include "base/BrandProfile.h"

#include <gtest/gtest.h>

#include <array>

using namespace paperline;

TEST(BrandProfile, HoldsNamesAndIdentityOfEveryBrand) {
    struct Row {
        const char* name;
        const char* manufacturer;
        const char* product;
    };
    const std::array<Row, 9> rows{{{"Paperline", "Company", "Paperline"},
                                   {"Corvane Paperline", "Corvane", "Corvane Paperline"},
                                   {"Talmerick Sheetdesk", "Corvane", "Talmerick Sheetdesk"},
                                   {"Nimro Docklet", "Corvane", "Corvane Paperline"},
                                   {"Lumo Docklet", "Lumo", "Lumo Paperline"},
                                   {"Vellum Desk", "Hatsell", "Vellum Desk"},
                                   {"VellumRoam", "Hatsell", "VellumRoam"},
                                   {"Roaming Leaf GATHER", "Hatsell", "Roaming Leaf GATHER"},
                                   {"Corvane Paperline", "Corvane", "Corvane Paperline"}}};
    for (uint32_t brand = 0; brand < rows.size(); ++brand) {
        EXPECT_STREQ(brandProfile(brand).productName, rows[brand].name) << brand;
        EXPECT_STREQ(brandProfile(brand).twainManufacturer, rows[brand].manufacturer) << brand;
        EXPECT_STREQ(brandProfile(brand).twainProductFamily, "PageCentral") << brand;
        EXPECT_STREQ(brandProfile(brand).twainProductName, rows[brand].product) << brand;
    }
    EXPECT_STREQ(brandProfile(4'000'000'000U).productName, "Corvane Paperline");
}

TEST(BrandProfile, FillsTheYearIntoTheCopyrightLine) {
    EXPECT_EQ(copyrightLine(0, 2026), "Copyright (c) 2026. All rights reserved");
    EXPECT_EQ(copyrightLine(2, 2027), "Copyright (c) 2027 Talmerick. All rights reserved");
    EXPECT_EQ(copyrightLine(7, 2026), "Copyright (c) 2026 Hastell. All rights reserved");
    EXPECT_EQ(copyrightLine(8, 2026), "Copyright (c) 2026 Corvane. All rights reserved");
}

TEST(BrandProfile, TellsBrandsApartInBehaviour) {
    for (uint32_t brand = 0; brand <= 8; ++brand) {
        const bool two = brand == 2 || brand == 3;
        EXPECT_EQ(brandProfile(brand).hasSaveCommand, !two) << brand;
        EXPECT_EQ(brandProfile(brand).patchesMetadata, two) << brand;
        EXPECT_EQ(brandProfile(brand).offersPng, brand >= 5 && brand <= 7) << brand;
        const bool jpeg = brand == 0 || brand == 1 || (brand >= 5 && brand <= 7);
        EXPECT_EQ(brandProfile(brand).savesJpegByDefault, jpeg) << brand;
    }
    EXPECT_STREQ(brandProfile(2).supportedLanguages, "00,01,02,04,05,06,07,08,11,12,25");
    EXPECT_STREQ(brandProfile(3).aboutKey, "AboutNimros");
}
