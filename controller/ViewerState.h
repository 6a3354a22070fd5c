// State of the page list and the page view.
#pragma once

#include "codecs/pixels/Geometry.h"
#include "controller/CellInfo.h"

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

class QTimer;

namespace paperline {

class CustomCell;

// What a table shows in one row: nothing, a page (valid until the rows change) or a text.
using TableObjectValue = std::variant<std::monostate, const CellInfo*, std::string>;

inline constexpr int32_t fitMode = 1; // values of _fitOrAcutalImage
inline constexpr int32_t actualSizeMode = 2;

struct ViewerState {
    std::vector<CellInfo> cellInfos;
    std::vector<QImage> cellInfoImages;
    int32_t _selectedRaw = 0; // -1: none
    int32_t _fitOrAcutalImage = 0;
    uint8_t firstFitImage = 0;
    uint8_t changeThumbnailSelect = 0;
    uint8_t mNeedSetImage = 0;
    Rect orgRect;
    Rect saveRect;
    Rect nonSaveRect;
    Rect _saveOrgImageFrame;
    QTimer* eyeStopperCursorTimer = nullptr;
};

extern int32_t iNextImage;               // first path of imageFilePath without rows
extern int32_t gHighResolutionPageCount; // paths listed at 301 dpi or more
extern int32_t gNoDisplayImageShown;     // the "NoDisplayImage" message was shown in this scan

} // namespace paperline
