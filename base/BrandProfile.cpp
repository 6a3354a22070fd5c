#include "base/BrandProfile.h"

#include <array>

namespace paperline {

uint32_t gBrandNumber = 0;

namespace {

constexpr const char* hastellCopyright = "Copyright (c) %d Hastell. All rights reserved";
constexpr const char* corvaneCopyright = "Copyright (c) %d Corvane. All rights reserved";

// Kept as they are: brand 2 announces "Corvane" to TWAIN, brand 3 shares brand 1's identity, and
// brands 5 to 7 announce "Hatsell", unlike their copyright line.
constexpr std::array<BrandProfile, 9> profiles{{
    {.productName = "Paperline",
     .copyrightFormat = "Copyright (c) %d. All rights reserved",
     .twainManufacturer = "Company",
     .twainProductName = "Paperline",
     .aboutKey = "AboutPL",
     .hideKey = "HidePL",
     .quitKey = "QuitPL",
     .sourceBrandWord = "PageCentral",
     .savesJpegByDefault = true},
    {.productName = "Corvane Paperline",
     .copyrightFormat = corvaneCopyright,
     .twainManufacturer = "Corvane",
     .twainProductName = "Corvane Paperline",
     .aboutKey = "AboutCPL",
     .hideKey = "HideCPL",
     .quitKey = "QuitCPL",
     .sourceBrandWord = "Corvane",
     .savesJpegByDefault = true},
    {.productName = "Talmerick Sheetdesk",
     .copyrightFormat = "Copyright (c) %d Talmerick. All rights reserved",
     .twainManufacturer = "Corvane",
     .twainProductName = "Talmerick Sheetdesk",
     .aboutKey = "AboutTalmerick",
     .hideKey = "HideTalmerick",
     .quitKey = "QuitTalmerick",
     .sourceBrandWord = "Talmerick",
     .sourceSecondBrandWord = "Nimro",
     .supportedLanguages = "00,01,02,04,05,06,07,08,11,12,25",
     .hasSaveCommand = false,
     .patchesMetadata = true},
    {.productName = "Nimro Docklet",
     .copyrightFormat = "Copyright (c) %d Nimro. All rights reserved",
     .twainManufacturer = "Corvane",
     .twainProductName = "Corvane Paperline",
     .aboutKey = "AboutNimros",
     .hideKey = "HideNimros",
     .quitKey = "QuitNimros",
     .sourceBrandWord = "Nimro",
     .hasSaveCommand = false,
     .patchesMetadata = true},
    {.productName = "Lumo Docklet",
     .copyrightFormat = "Copyright (c) %d Lumo. All rights reserved",
     .twainManufacturer = "Lumo",
     .twainProductName = "Lumo Paperline",
     .aboutKey = "AboutLumo",
     .hideKey = "HideLumo",
     .quitKey = "QuitLumo",
     .sourceBrandWord = "Lumo"},
    {.productName = "Vellum Desk",
     .copyrightFormat = hastellCopyright,
     .twainManufacturer = "Hatsell",
     .twainProductName = "Vellum Desk",
     .aboutKey = "AboutHastellVellumDesk",
     .hideKey = "HideHastellVellumDesk",
     .quitKey = "QuitHastellVellumDesk",
     .sourceBrandWord = "Hastell",
     .savesJpegByDefault = true,
     .offersPng = true},
    {.productName = "VellumRoam",
     .copyrightFormat = hastellCopyright,
     .twainManufacturer = "Hatsell",
     .twainProductName = "VellumRoam",
     .aboutKey = "AboutHastellVellumRoam",
     .hideKey = "HideHastellVellumRoam",
     .quitKey = "QuitHastellVellumRoam",
     .sourceBrandWord = "Hastell",
     .savesJpegByDefault = true,
     .offersPng = true},
    {.productName = "Roaming Leaf GATHER",
     .copyrightFormat = hastellCopyright,
     .twainManufacturer = "Hatsell",
     .twainProductName = "Roaming Leaf GATHER",
     .aboutKey = "AboutHastellRoamingLeafGATHER",
     .hideKey = "HideHastellRoamingLeafGATHER",
     .quitKey = "QuitHastellRoamingLeafGATHER",
     .sourceBrandWord = "Hastell",
     .savesJpegByDefault = true,
     .offersPng = true},
    // Any other number: brand 1's names; JPEG is the default of the listed brands only.
    {.productName = "Corvane Paperline",
     .copyrightFormat = corvaneCopyright,
     .twainManufacturer = "Corvane",
     .twainProductName = "Corvane Paperline",
     .aboutKey = "AboutCPL",
     .hideKey = "HideCPL",
     .quitKey = "QuitCPL",
     .sourceBrandWord = "Corvane"},
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
