// A folder of pictures as the sheets in a feeder.
#pragma once

#include "sources/software/PixelPacking.h"

#include "codecs/pictures/PictureReader.h"
#include "sources/framework/ScanTypes.h"
#include "sources/worker/ScanDevice.h"

#include <optional>
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

    // Delivers a picture pixel for pixel in the depth and resolution asked for (format's size is
    // not looked at). ioError when the file is damaged by now.
    [[nodiscard]] ScanStatus deliver(size_t index, PageFormat format, PageSink& sink) const;

private:
    struct Page {
        std::string path;
        int index = 0; // within the file
    };
    std::vector<Page> pages_;
};

} // namespace paperline::sources
