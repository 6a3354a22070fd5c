// Names and constants of the eight brands. Any other number behaves as the entry after the table.
#pragma once

#include <cstdint>
#include <string>

namespace paperline {

extern uint32_t gBrandNumber; // set by AppDelegate::init, never changed afterwards

struct BrandProfile {
    const char* productName;     // About panel and window title
    const char* copyrightFormat; // "%d" is the year
    const char* twainManufacturer;
    const char* twainProductFamily = "PageCentral";
    const char* twainProductName;
    const char* aboutKey; // application-menu texts
    const char* hideKey;
    const char* quitKey;
    const char* sourceBrandWord; // a source's maker must hold it (brand 0: its product family)
    const char* sourceSecondBrandWord = nullptr; // or this one
    const char* supportedLanguages = "";         // "00,01,..."; empty: all 27
    bool hasSaveCommand = true; // the save switch has Floppy icons, a tooltip, a File-menu entry
    bool savesJpegByDefault = false; // else BMP
    bool offersPng = false;          // PNG stands in the format list
    bool patchesMetadata = false;    // scanner's maker and model go into saved files
};

const BrandProfile& brandProfile(uint32_t brandNumber);
std::string copyrightLine(uint32_t brandNumber, int year);

inline constexpr const char* twainVersionText = "1.00";

} // namespace paperline
