#include "output/TiffCodecs.h"

#include "codecs/pictures/PictureReader.h"
#include "codecs/tiff/TiffJoiner.h"
#include "codecs/tiff/TiffWriter.h"

#include <limits>

namespace paperline {

namespace {

class TiffPageJoiner : public PageJoiner {
public:
    TiffPageJoiner(const std::string& outputPath, TiffJoining joining)
        : joiner_(outputPath, joining, [](const std::string& path) {
              return readPicture(path, 0, std::numeric_limits<uint32_t>::max());
          }) {}

    bool isOpen() const { return joiner_.isOpen(); }
    Added add(const std::string& pageFile) override {
        switch (joiner_.add(pageFile)) {
        case TiffJoiner::Added::yes:
            return Added::yes;
        case TiffJoiner::Added::unreadable:
            return Added::unreadable;
        default:
            return Added::outputFailed;
        }
    }
    bool finish() override { return joiner_.finish(); }

private:
    TiffJoiner joiner_;
};

PageCodecs::JoinerFactory joinerFactory(TiffJoining joining) {
    return [joining](const std::string& outputPath) -> std::unique_ptr<PageJoiner> {
        return std::make_unique<TiffPageJoiner>(outputPath, joining);
    };
}

} // namespace

void addTiffCodecs(PageCodecs& codecs) {
    codecs.tiff = [](const BitmapImageRep& page, Density density) {
        return encodeTiff(
            page, {.horizontalDpi = density.horizontalDpi, .verticalDpi = density.verticalDpi});
    };
    codecs.tiffDeclared300Dpi = joinerFactory(TiffJoining::declared300Dpi);
    codecs.tiffUnchanged = joinerFactory(TiffJoining::unchanged);
}

} // namespace paperline
