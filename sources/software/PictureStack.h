// A folder of pictures as the pages in a feeder.
#pragma once

#include "codecs/pixels/BitmapImageRep.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace paperline::sources {

class PictureStack {
public:
    // Every page of every picture, in byte order of the names; other files are skipped. Nothing
    // when the folder cannot be read.
    [[nodiscard]] static std::optional<PictureStack> load(const std::string& folder);

    size_t pageCount() const { return pages_.size(); }
    // The page's file.
    const std::string& path(size_t index) const { return pages_[index].path; }

    // Null when the file cannot be read any more.
    std::shared_ptr<BitmapImageRep> read(size_t index) const;

private:
    struct Page {
        std::string path;
        int index = 0; // within the file
    };
    std::vector<Page> pages_;
};

// Fills `rows` with the picture's rows from `firstRow` on, at 1, 8 or 24 bits a pixel.
void convertRows(const BitmapImageRep& picture,
                 int32_t firstRow,
                 int bitsPerPixel,
                 std::span<uint8_t> rows);

} // namespace paperline::sources
