#include "base/BrandProfile.h"

#include <array>

namespace paperline {

uint32_t gBrandNumber = 0;

namespace {

constexpr const char* hastellCopyright = "Copyright (c) %d Hastell. All rights reserved";
constexpr const char* corvaneCopyright = "Copyright (c) %d Corvane. All rights reserved";

// A row's position is its brand's number. Three oddities are on purpose: brand 2 announces
// "Corvane" to TWAIN, brand 3 shares brand 1's identity, and brands 5 to 7 announce "Hatsell",
// unlike their copyright line.
constexpr auto brands = std::to_array<BrandProfile>({
    {.productName = "Paperline",
     .copyrightFormat = "Copyright (c) %d. All rights reserved",
     .twainManufacturer = "Company",
     .twainProductName = "Paperline",
     .aboutKey = "AboutPL",
     .hideKey = "HidePL",
     .quitKey = "QuitPL",
     .sourceWord = "PageCentral",
     .sourceWordIsInFamily = true,
     .defaultFileFormat = formatJpeg},
    {.productName = "Corvane Paperline",
     .copyrightFormat = corvaneCopyright,
     .twainManufacturer = "Corvane",
     .twainProductName = "Corvane Paperline",
     .aboutKey = "AboutCPL",
     .hideKey = "HideCPL",
     .quitKey = "QuitCPL",
     .sourceWord = "Corvane",
     .defaultFileFormat = formatJpeg},
    {.productName = "Talmerick Sheetdesk",
     .copyrightFormat = "Copyright (c) %d Talmerick. All rights reserved",
     .twainManufacturer = "Corvane",
     .twainProductName = "Talmerick Sheetdesk",
     .aboutKey = "AboutTalmerick",
     .hideKey = "HideTalmerick",
     .quitKey = "QuitTalmerick",
     .sourceWord = "Talmerick",
     .secondSourceWord = "Nimro",
     .handlerTraceLine = "gTWAINHandler COMPANYNAME_TALMERICK",
     .supportedLanguages = "00,01,02,04,05,06,07,08,11,12,25",
     .hasSaveCommand = false,
     .patchesMetadata = true,
     .copiesTiffPages = true},
    {.productName = "Nimro Docklet",
     .copyrightFormat = "Copyright (c) %d Nimro. All rights reserved",
     .twainManufacturer = "Corvane",
     .twainProductName = "Corvane Paperline",
     .aboutKey = "AboutNimros",
     .hideKey = "HideNimros",
     .quitKey = "QuitNimros",
     .sourceWord = "Nimro",
     .hasSaveCommand = false,
     .patchesMetadata = true,
     .copiesTiffPages = true},
    {.productName = "Lumo Docklet",
     .copyrightFormat = "Copyright (c) %d Lumo. All rights reserved",
     .twainManufacturer = "Lumo",
     .twainProductName = "Lumo Paperline",
     .aboutKey = "AboutLumo",
     .hideKey = "HideLumo",
     .quitKey = "QuitLumo",
     .sourceWord = "Lumo"},
    {.productName = "Vellum Desk",
     .copyrightFormat = hastellCopyright,
     .twainManufacturer = "Hatsell",
     .twainProductName = "Vellum Desk",
     .aboutKey = "AboutHastellVellumDesk",
     .hideKey = "HideHastellVellumDesk",
     .quitKey = "QuitHastellVellumDesk",
     .sourceWord = "Hastell",
     .defaultFileFormat = formatJpeg,
     .offersPng = true},
    {.productName = "VellumRoam",
     .copyrightFormat = hastellCopyright,
     .twainManufacturer = "Hatsell",
     .twainProductName = "VellumRoam",
     .aboutKey = "AboutHastellVellumRoam",
     .hideKey = "HideHastellVellumRoam",
     .quitKey = "QuitHastellVellumRoam",
     .sourceWord = "Hastell",
     .defaultFileFormat = formatJpeg,
     .offersPng = true},
    {.productName = "Roaming Leaf GATHER",
     .copyrightFormat = hastellCopyright,
     .twainManufacturer = "Hatsell",
     .twainProductName = "Roaming Leaf GATHER",
     .aboutKey = "AboutHastellRoamingLeafGATHER",
     .hideKey = "HideHastellRoamingLeafGATHER",
     .quitKey = "QuitHastellRoamingLeafGATHER",
     .sourceWord = "Hastell",
     .defaultFileFormat = formatJpeg,
     .offersPng = true},
});

// Any other number: brand 1's names, but BMP as the default format.
constexpr BrandProfile otherBrand{.productName = "Corvane Paperline",
                                  .copyrightFormat = corvaneCopyright,
                                  .twainManufacturer = "Corvane",
                                  .twainProductName = "Corvane Paperline",
                                  .aboutKey = "AboutCPL",
                                  .hideKey = "HideCPL",
                                  .quitKey = "QuitCPL",
                                  .sourceWord = "Corvane"};

} // namespace

bool BrandProfile::offersSource(std::string_view manufacturer,
                                std::string_view productFamily) const {
    const std::string_view tested = sourceWordIsInFamily ? productFamily : manufacturer;
    for (const std::string_view word : {sourceWord, secondSourceWord, ownSourcesMaker})
        if (!word.empty() && tested.find(word) != std::string_view::npos)
            return true;
    return false;
}

const BrandProfile& brandProfile(uint32_t brandNumber) {
    return brandNumber < brands.size() ? brands[brandNumber] : otherBrand;
}

std::string copyrightLine(uint32_t brandNumber, int year) {
    const std::string format = brandProfile(brandNumber).copyrightFormat;
    const size_t place = format.find("%d");
    return format.substr(0, place) + std::to_string(year) + format.substr(place + 2);
}

} // namespace paperline
