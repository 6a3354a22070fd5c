// The writers of page files, called by the dispatch and by the controller's operations of the same
// names.
#pragma once

#include "codecs/pixels/Image.h"
#include "platform/files/PageFile.h"

#include <cstdint>
#include <string>

namespace paperline {

class AppDelegate;

// What became of a page.
struct SaveOutcome {
    int32_t code = 0; // the operation's result: negative is not saved, -2 for lack of disk space
    PageWrite write;  // the file, which may be missing or cut off although the code says saved
};

// Where a page goes. Scratch files are told by their path.
PageWriteTarget pageTarget(const std::string& path, NextPagePath nextPath = nullptr);

struct BmpRequest {
    uint8_t* pixels = nullptr; // of a 24-bit page they are left with red and blue swapped
    const BitmapImageRep& layout;
    uint32_t horizontalDpi = 0;
    uint32_t verticalDpi = 0;
};
// 0, -1 or -2.
[[nodiscard]] SaveOutcome
writeBmpPage(AppDelegate& controller, const BmpRequest& page, const PageWriteTarget& target);

struct ImageRequest {
    const Image& image;
    int32_t imageType = 0;
    const std::string& volumePath; // whose free space is tested
    int32_t resolutionDpi = 0;
};
// 1 even when the file could not be written; -1 when the page could not be encoded; -2.
[[nodiscard]] SaveOutcome
writeImagePage(AppDelegate& controller, const ImageRequest& page, const PageWriteTarget& target);

// Tells trace and log which page is missing and why.
void reportUnwritten(const char* operation, const PageWrite& write);

} // namespace paperline
