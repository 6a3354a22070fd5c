// What distinguishes the brands: one row for each in the table of the .cpp. The rest of the program
// asks the row and never looks at the number.
#pragma once

#include "base/FileFormats.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace paperline {

extern uint32_t gBrandNumber; // set by AppDelegate::init, never changed afterwards

inline constexpr const char* twainVersionText = "1.00";
inline constexpr std::string_view ownSourcesMaker = "Corvane"; // of our own data sources

struct BrandProfile {
    const char* productName;     // About panel and window title
    const char* copyrightFormat; // "%d" is the year
    const char* twainManufacturer;
    const char* twainProductFamily = "PageCentral";
    const char* twainProductName;
    const char* aboutKey; // application-menu texts, in every language's Localizable.strings
    const char* hideKey;
    const char* quitKey;
    std::string_view sourceWord;              // in the manufacturer of every source that is offered
    std::string_view secondSourceWord = {};   // or this one
    bool sourceWordIsInFamily = false;        // looked for in the product family instead
    const char* handlerTraceLine = nullptr;   // traced when the TWAIN handler is made
    std::string_view supportedLanguages = {}; // "00,01,..."; empty: all 27
    int32_t defaultFileFormat = formatBmp;    // while there is no settings file
    bool hasSaveCommand = true;   // the save switch has Floppy icons, a tooltip, a File-menu entry
    bool offersPng = false;       // PNG is in the format list
    bool patchesMetadata = false; // scanner's maker and model go into saved files
    bool copiesTiffPages = false; // joining TIFF pages copies them instead of encoding them again

    // Whether the source is one of the brand's: one of the words, case as written, or the maker of
    // our own sources.
    bool offersSource(std::string_view manufacturer, std::string_view productFamily) const;
};

// The brand's row; a number outside the table has a row of its own.
const BrandProfile& brandProfile(uint32_t brandNumber);
std::string copyrightLine(uint32_t brandNumber, int year);

} // namespace paperline
