// Names a page, hands it to the writer of its format and lists where it went.
#pragma once

#include "output/PageWriters.h"
#include "twain/records/TwainTypes.h"

#include <cstdint>

namespace paperline {

// A page as the transfer hands it over.
struct ReceivedPage {
    const BitmapImageRep& representation;
    const Image& image;
    uint8_t* pixels = nullptr; // of the representation
    int32_t horizontalDpi = 0; // reportedDpi() of the image information
    int32_t verticalDpi = 0;
};

// Whole dots per inch, by resolutionOfFixedPoint().
int32_t reportedDpi(const TW_FIX32& resolution);

// Saves the page, stages it for a file of several pages, or only shows it, as the controller's
// settings say. The code is 0 or that of the writer that failed. A page that is only shown is never
// reported as missing.
[[nodiscard]] SaveOutcome saveReceivedPage(AppDelegate& controller, const ReceivedPage& page);

} // namespace paperline
