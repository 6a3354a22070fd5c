// libtiff's handles on a file, a descriptor or memory. They print nothing. Only codecs/tiff
// includes this.
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

// Counts the library's error messages. Must outlive the handle.
struct TiffErrors {
    int count = 0;
};

// A TIFF file in memory. Must outlive the handle.
struct TiffMemory {
    std::vector<uint8_t> bytes;
    uint64_t position = 0;
};
[[nodiscard]] TiffHandle openTiffMemory(TiffMemory& memory, const char* mode, TiffErrors& errors);

// A TIFF file behind a descriptor, which stays open. Several handles may share a descriptor: each
// has its own position. Must outlive the handle.
struct TiffDescriptor {
    int number = -1;
    uint64_t position = 0;
    bool writeFailed = false;
};
[[nodiscard]] TiffHandle openTiffDescriptor(TiffDescriptor& file,
                                            const char* mode,
                                            TiffErrors& errors,
                                            tmsize_t largestAllocation = 0);

// A regular file opened for reading, its first page current. Not mapped: truncating a mapped file
// raises SIGBUS.
class TiffFile {
public:
    // The library allocates at most `largestAllocation` bytes at once; 0: any number.
    explicit TiffFile(const std::string& path, tmsize_t largestAllocation = 0);
    TIFF* tiff() const { return tiff_.get(); } // null: not a TIFF file
    bool hasErrors() const { return errors_.count > 0; }

private:
    std::optional<RegularFile> file_;
    TiffErrors errors_;
    TiffDescriptor access_;
    TiffHandle tiff_;
};

} // namespace paperline
