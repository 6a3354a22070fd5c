// The TIFF library's handles: opened on a file, a descriptor or memory, quiet, and closed with
// their object. Only the files of the TIFF adapter include this.
#pragma once

#include "platform/files/Descriptor.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <tiffio.h>

namespace paperline {

struct TiffCloser {
    void operator()(TIFF* tiff) const noexcept { TIFFClose(tiff); }
};
using TiffHandle = std::unique_ptr<TIFF, TiffCloser>;

// Counts what the library reports as an error while the handle lives; nothing goes to standard
// error. Outlives the handle.
struct TiffErrors {
    int count = 0;
};

// Opens a file for reading. Not mapped: a file that is cut while it is read must not kill the
// program. The library takes at most `largestAllocation` bytes at once; 0 leaves it free.
[[nodiscard]] TiffHandle
openTiffFile(const std::string& path, tmsize_t largestAllocation, TiffErrors& errors);

// A TIFF file in memory, read or written through a handle. Outlives it.
struct TiffMemory {
    std::vector<uint8_t> bytes;
    uint64_t position = 0;
};
[[nodiscard]] TiffHandle openTiffMemory(TiffMemory& memory, const char* mode, TiffErrors& errors);

// A TIFF file behind a descriptor, which stays open. Handles on one descriptor do not disturb each
// other: each has a position of its own. Outlives the handle.
struct TiffDescriptor {
    int number = -1;
    uint64_t position = 0;
    bool writeFailed = false;
};
[[nodiscard]] TiffHandle
openTiffDescriptor(TiffDescriptor& file, const char* mode, TiffErrors& errors);

} // namespace paperline
