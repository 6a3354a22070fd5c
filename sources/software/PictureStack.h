// A folder of pictures as the sheets in a feeder.
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
    // Every picture in the folder, by name in byte order, every page of each; files that are no
    // pictures are left out. Nothing when the folder cannot be read.
    [[nodiscard]] static std::optional<PictureStack> load(const std::string& folder);

    size_t pageCount() const { return pages_.size(); }
    // Which file a page comes from.
    const std::string& path(size_t index) const { return pages_[index].path; }

    // Null when the file has become unreadable since.
    std::shared_ptr<BitmapImageRep> read(size_t index) const;

private:
    struct Page {
        std::string path;
        int index = 0; // within the file
    };
    std::vector<Page> pages_;
};

// The picture's rows from `firstRow` on, at 1, 8 or 24 bits a pixel, as many as there is room for.
void convertRows(const BitmapImageRep& picture,
                 int32_t firstRow,
                 int bitsPerPixel,
                 std::span<uint8_t> rows);

} // namespace paperline::sources
