#include "app/BrandProfile.h"

#include <array>

namespace paperline {

uint32_t gBrandNumber = 0;

namespace {

constexpr const char* allLanguages = "";
constexpr const char* hastellCopyright = "Copyright (c) %d Hastell. All rights reserved";
constexpr const char* corvaneCopyright = "Copyright (c) %d Corvane. All rights reserved";

// Kept as they are: brand 2 announces "Corvane" to TWAIN, brand 3 shares brand 1's identity, and
// brands 5 to 7 announce "Hatsell", unlike their copyright line.
constexpr std::array<BrandProfile, 9> profiles{{
    {.productName = "Paperline",
     .copyrightFormat = "Copyright (c) %d. All rights reserved",
     .twainManufacturer = "Company",
     .twainProductFamily = "PageCentral",
     .twainProductName = "Paperline",
     .aboutKey = "AboutPL",
     .hideKey = "HidePL",
     .quitKey = "QuitPL",
     .sourceBrandWord = "PageCentral",
     .sourceSecondBrandWord = nullptr,
     .supportedLanguages = allLanguages,
     .hasSaveCommand = true,
     .savesJpegByDefault = true,
     .offersPng = false,
     .patchesMetadata = false},
    {.productName = "Corvane Paperline",
     .copyrightFormat = corvaneCopyright,
     .twainManufacturer = "Corvane",
     .twainProductFamily = "PageCentral",
     .twainProductName = "Corvane Paperline",
     .aboutKey = "AboutCPL",
     .hideKey = "HideCPL",
     .quitKey = "QuitCPL",
     .sourceBrandWord = "Corvane",
     .sourceSecondBrandWord = nullptr,
     .supportedLanguages = allLanguages,
     .hasSaveCommand = true,
     .savesJpegByDefault = true,
     .offersPng = false,
     .patchesMetadata = false},
    {.productName = "Talmerick Sheetdesk",
     .copyrightFormat = "Copyright (c) %d Talmerick. All rights reserved",
     .twainManufacturer = "Corvane",
     .twainProductFamily = "PageCentral",
     .twainProductName = "Talmerick Sheetdesk",
     .aboutKey = "AboutTalmerick",
     .hideKey = "HideTalmerick",
     .quitKey = "QuitTalmerick",
     .sourceBrandWord = "Talmerick",
     .sourceSecondBrandWord = "Nimro",
     .supportedLanguages = "00,01,02,04,05,06,07,08,11,12,25",
     .hasSaveCommand = false,
     .savesJpegByDefault = false,
     .offersPng = false,
     .patchesMetadata = true},
    {.productName = "Nimro Docklet",
     .copyrightFormat = "Copyright (c) %d Nimro. All rights reserved",
     .twainManufacturer = "Corvane",
     .twainProductFamily = "PageCentral",
     .twainProductName = "Corvane Paperline",
     .aboutKey = "AboutNimros",
     .hideKey = "HideNimros",
     .quitKey = "QuitNimros",
     .sourceBrandWord = "Nimro",
     .sourceSecondBrandWord = nullptr,
     .supportedLanguages = allLanguages,
     .hasSaveCommand = false,
     .savesJpegByDefault = false,
     .offersPng = false,
     .patchesMetadata = true},
    {.productName = "Lumo Docklet",
     .copyrightFormat = "Copyright (c) %d Lumo. All rights reserved",
     .twainManufacturer = "Lumo",
     .twainProductFamily = "PageCentral",
     .twainProductName = "Lumo Paperline",
     .aboutKey = "AboutLumo",
     .hideKey = "HideLumo",
     .quitKey = "QuitLumo",
     .sourceBrandWord = "Lumo",
     .sourceSecondBrandWord = nullptr,
     .supportedLanguages = allLanguages,
     .hasSaveCommand = true,
     .savesJpegByDefault = false,
     .offersPng = false,
     .patchesMetadata = false},
    {.productName = "Vellum Desk",
     .copyrightFormat = hastellCopyright,
     .twainManufacturer = "Hatsell",
     .twainProductFamily = "PageCentral",
     .twainProductName = "Vellum Desk",
     .aboutKey = "AboutHastellVellumDesk",
     .hideKey = "HideHastellVellumDesk",
     .quitKey = "QuitHastellVellumDesk",
     .sourceBrandWord = "Hastell",
     .sourceSecondBrandWord = nullptr,
     .supportedLanguages = allLanguages,
     .hasSaveCommand = true,
     .savesJpegByDefault = true,
     .offersPng = true,
     .patchesMetadata = false},
    {.productName = "VellumRoam",
     .copyrightFormat = hastellCopyright,
     .twainManufacturer = "Hatsell",
     .twainProductFamily = "PageCentral",
     .twainProductName = "VellumRoam",
     .aboutKey = "AboutHastellVellumRoam",
     .hideKey = "HideHastellVellumRoam",
     .quitKey = "QuitHastellVellumRoam",
     .sourceBrandWord = "Hastell",
     .sourceSecondBrandWord = nullptr,
     .supportedLanguages = allLanguages,
     .hasSaveCommand = true,
     .savesJpegByDefault = true,
     .offersPng = true,
     .patchesMetadata = false},
    {.productName = "Roaming Leaf GATHER",
     .copyrightFormat = hastellCopyright,
     .twainManufacturer = "Hatsell",
     .twainProductFamily = "PageCentral",
     .twainProductName = "Roaming Leaf GATHER",
     .aboutKey = "AboutHastellRoamingLeafGATHER",
     .hideKey = "HideHastellRoamingLeafGATHER",
     .quitKey = "QuitHastellRoamingLeafGATHER",
     .sourceBrandWord = "Hastell",
     .sourceSecondBrandWord = nullptr,
     .supportedLanguages = allLanguages,
     .hasSaveCommand = true,
     .savesJpegByDefault = true,
     .offersPng = true,
     .patchesMetadata = false},
    // Any other number: brand 1's names; JPEG is the default of the listed brands only.
    {.productName = "Corvane Paperline",
     .copyrightFormat = corvaneCopyright,
     .twainManufacturer = "Corvane",
     .twainProductFamily = "PageCentral",
     .twainProductName = "Corvane Paperline",
     .aboutKey = "AboutCPL",
     .hideKey = "HideCPL",
     .quitKey = "QuitCPL",
     .sourceBrandWord = "Corvane",
     .sourceSecondBrandWord = nullptr,
     .supportedLanguages = allLanguages,
     .hasSaveCommand = true,
     .savesJpegByDefault = false,
     .offersPng = false,
     .patchesMetadata = false},
}};

} // namespace

const BrandProfile& brandProfile(uint32_t brandNumber) {
    return brandNumber < profiles.size() ? profiles[brandNumber] : profiles.back();
}

std::string copyrightLine(uint32_t brandNumber, int year) {
    const std::string format = brandProfile(brandNumber).copyrightFormat;
    const size_t place = format.find("%d");
    return format.substr(0, place) + std::to_string(year) + format.substr(place + 2);
}

} // namespace paperline
