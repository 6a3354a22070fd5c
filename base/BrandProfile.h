// Names and features of the eight brands. Other numbers have a profile of their own.
#pragma once

#include <cstdint>
#include <string>

namespace paperline {

extern uint32_t gBrandNumber; // set by AppDelegate::init

struct BrandProfile {
    const char* productName;     // About panel and window title
    const char* copyrightFormat; // "%d" is the year
    const char* twainManufacturer;
    const char* twainProductFamily = "PageCentral";
    const char* twainProductName;
    const char* aboutKey; // application-menu texts
    const char* hideKey;
    const char* quitKey;
    const char* sourceBrandWord; // in the manufacturer of its sources (brand 0: product family)
    const char* sourceSecondBrandWord = nullptr; // alternative
    const char* supportedLanguages = "";         // "00,01,..."; empty: all 27
    bool hasSaveCommand = true;      // Floppy icons, tooltip and File-menu entry of the save switch
    bool savesJpegByDefault = false; // else BMP
    bool offersPng = false;          // in the format list
    bool patchesMetadata = false;    // writes the scanner's maker and model into saved files
};

const BrandProfile& brandProfile(uint32_t brandNumber);
std::string copyrightLine(uint32_t brandNumber, int year);

inline constexpr const char* twainVersionText = "1.00";

} // namespace paperline
