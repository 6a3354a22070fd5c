// State of naming and saving.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace paperline {

// What is known of a file that is complete on disk.
struct SavedFile {
    std::string path;
    int32_t fileFormat = 0; // file-format code
    int32_t widthPixels = 0;
    int32_t heightPixels = 0;
    int bitsPerPixel = 0;
    double resolutionDpi = 0;
    int pages = 1;
};

struct OutputState {
    uint32_t currentPage = 0;                 // numbers the files; only grows
    uint32_t currentMultiPage = 0;            // page inside the multi-page file being built
    std::vector<std::string> imageFilePath;   // saved paths in scan order
    uint8_t nonFileSaveImageInTempFolder = 0; // the last entry is the display-only preview
    uint32_t nPageNumber = 0;
    uint32_t dwPreImageSize = 0;
    uint32_t nPreBitsPixel = 0;

    // The multi-page file being built, as far as its staged pages tell.
    SavedFile multiPageFile;
    std::vector<std::string> keptPagesFolders; // where unsaved pages are, until the user is told

    // Told about every file of the user's that is really complete; the command line prints them.
    std::function<void(const SavedFile&)> savedFileObserver;
};

extern bool firstPageOfBatch;           // names are tested for collisions while set
extern bool memoryShortage;             // the memory alert was shown in this batch
extern std::string multiPageTargetPath; // final path of the multi-page file being built
extern std::string multiTiffListPath;   // the copy of the multi-page TIFF that the list shows

} // namespace paperline
