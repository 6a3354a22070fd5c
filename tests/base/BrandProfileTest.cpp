#include "base/BrandProfile.h"
#include "tests/support/Brands.h"

#include <gtest/gtest.h>

#include <array>

using namespace paperline;
using testing_support::everyBrand;
using testing_support::unlistedBrand;

TEST(BrandProfile, HoldsNamesAndIdentityOfEveryBrand) {
    struct Row {
        const char* name;
        const char* manufacturer;
        const char* product;
    };
    const std::array<Row, 8> rows{{{"Paperline", "Company", "Paperline"},
                                   {"Corvane Paperline", "Corvane", "Corvane Paperline"},
                                   {"Talmerick Sheetdesk", "Corvane", "Talmerick Sheetdesk"},
                                   {"Nimro Docklet", "Corvane", "Corvane Paperline"},
                                   {"Lumo Docklet", "Lumo", "Lumo Paperline"},
                                   {"Vellum Desk", "Hatsell", "Vellum Desk"},
                                   {"VellumRoam", "Hatsell", "VellumRoam"},
                                   {"Roaming Leaf GATHER", "Hatsell", "Roaming Leaf GATHER"}}};
    for (uint32_t brand = 0; brand < rows.size(); ++brand) {
        EXPECT_STREQ(brandProfile(brand).productName, rows[brand].name) << brand;
        EXPECT_STREQ(brandProfile(brand).twainManufacturer, rows[brand].manufacturer) << brand;
        EXPECT_STREQ(brandProfile(brand).twainProductFamily, "PageCentral") << brand;
        EXPECT_STREQ(brandProfile(brand).twainProductName, rows[brand].product) << brand;
    }
    EXPECT_STREQ(brandProfile(unlistedBrand).productName, "Corvane Paperline");
    EXPECT_STREQ(brandProfile(unlistedBrand).twainManufacturer, "Corvane");
    EXPECT_STREQ(brandProfile(unlistedBrand).twainProductName, "Corvane Paperline");
}

TEST(BrandProfile, FillsTheYearIntoTheCopyrightLine) {
    EXPECT_EQ(copyrightLine(0, 2026), "Copyright (c) 2026. All rights reserved");
    EXPECT_EQ(copyrightLine(2, 2027), "Copyright (c) 2027 Talmerick. All rights reserved");
    EXPECT_EQ(copyrightLine(7, 2026), "Copyright (c) 2026 Hastell. All rights reserved");
    EXPECT_EQ(copyrightLine(unlistedBrand, 2026),
              "Copyright (c) 2026 Corvane. All rights reserved");
}

TEST(BrandProfile, TellsBrandsApartInBehaviour) {
    for (const uint32_t brand : everyBrand) {
        const bool two = brand == 2 || brand == 3;
        EXPECT_EQ(brandProfile(brand).hasSaveCommand, !two) << brand;
        EXPECT_EQ(brandProfile(brand).patchesMetadata, two) << brand;
        EXPECT_EQ(brandProfile(brand).copiesTiffPages, two) << brand;
        EXPECT_EQ(brandProfile(brand).offersPng, brand >= 5 && brand <= 7) << brand;
        const bool jpeg = brand == 0 || brand == 1 || (brand >= 5 && brand <= 7);
        EXPECT_EQ(brandProfile(brand).defaultFileFormat, jpeg ? 1 : 0) << brand;
        EXPECT_EQ(brandProfile(brand).handlerTraceLine != nullptr, brand == 2) << brand;
        EXPECT_EQ(brandProfile(brand).supportedLanguages.empty(), brand != 2) << brand;
    }
    EXPECT_EQ(brandProfile(2).supportedLanguages, "00,01,02,04,05,06,07,08,11,12,25");
    EXPECT_STREQ(brandProfile(3).aboutKey, "AboutNimros");
}

TEST(OffersSource, KeepsTheBrandsWordAnywhereInTheManufacturer) {
    EXPECT_TRUE(brandProfile(7).offersSource("The Hastell Co", ""));
    EXPECT_FALSE(brandProfile(7).offersSource("hastell", ""));
    EXPECT_FALSE(brandProfile(7).offersSource("Other", "Hastell"));
}

TEST(OffersSource, KeepsTheMakersWordForEveryBrand) {
    EXPECT_TRUE(brandProfile(7).offersSource("Corvane Inc.", ""));
    EXPECT_TRUE(brandProfile(unlistedBrand).offersSource("Corvane Inc.", ""));
}

TEST(OffersSource, KeepsTheSecondWordWhereThereIsOne) {
    EXPECT_TRUE(brandProfile(2).offersSource("Nimro GmbH", ""));
    EXPECT_FALSE(brandProfile(7).offersSource("Nimro GmbH", ""));
}

TEST(OffersSource, LooksAtTheFamilyForTheGenericBrand) {
    EXPECT_TRUE(brandProfile(0).offersSource("Other", "PageCentral"));
    EXPECT_FALSE(brandProfile(0).offersSource("PageCentral", "Other"));
    EXPECT_FALSE(brandProfile(0).offersSource("Corvane", "Other"));
    EXPECT_TRUE(brandProfile(0).offersSource("Other", "Corvane"));
}
