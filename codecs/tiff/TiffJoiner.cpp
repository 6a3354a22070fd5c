#include "codecs/tiff/TiffJoiner.h"

#include "codecs/pixels/DecodedImage.h"
#include "codecs/tiff/TiffPages.h"
#include "codecs/tiff/TiffWriter.h"
#include "platform/files/NewFile.h"

#include <optional>
#include <unistd.h>
#include <utility>

namespace paperline {
namespace {

constexpr double declaredDpi = 300;
constexpr double fallbackDpi = 72; // of pages without a resolution
// For the tags of a page and the offsets of its strips.
constexpr uint64_t directoryBytes = 64 * 1024;

// Whether the raw strips keep their meaning in a little-endian file.
bool hasPortableData(TIFF* tiff) {
    uint16_t bits = 1;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_BITSPERSAMPLE, &bits);
    return bits <= 8 || TIFFIsBigEndian(tiff) == 0;
}

} // namespace

// The temporary file.
class TiffJoiner::Output {
public:
    Output(const std::string& path, bool big) : isBig_(big), file_(path, NewFile::Named{}) {
        if (!file_.isOpen())
            return;
        access_.number = file_.descriptor();
        tiff_ = openTiffDescriptor(access_, big ? "wl8" : "wl", errors_);
    }

    bool isOpen() const { return tiff_ != nullptr; }
    bool isBig() const { return isBig_; }
    bool failed() const { return access_.writeFailed; }
    TIFF* tiff() const { return tiff_.get(); }
    int descriptor() const { return file_.descriptor(); }
    uint64_t bytes() const { return TIFFGetSizeProc(tiff_.get())(TIFFClientdata(tiff_.get())); }

    // Removes the incomplete page at `start`; false when that fails.
    bool dropPage(uint64_t start) {
        TIFFFreeDirectory(tiff_.get());
        return TIFFCreateDirectory(tiff_.get()) == 0 &&
               ::ftruncate(file_.descriptor(), static_cast<off_t>(start)) == 0;
    }

    bool close() {
        const bool whole = TIFFFlush(tiff_.get()) != 0;
        tiff_.reset();
        return whole && !failed() && file_.replaceTarget();
    }

private:
    bool isBig_;
    NewFile file_;
    TiffErrors errors_;
    TiffDescriptor access_;
    TiffHandle tiff_; // last: closing it may write
};

TiffJoiner::TiffJoiner(const std::string& outputPath,
                       TiffJoining joining,
                       PictureDecoder decodeOther,
                       uint64_t classicBytes)
    : outputPath_(outputPath), joining_(joining), decodeOther_(std::move(decodeOther)),
      classicBytes_(classicBytes), output_(std::make_unique<Output>(outputPath, false)) {}

TiffJoiner::~TiffJoiner() = default;

bool TiffJoiner::isOpen() const {
    return output_ && output_->isOpen();
}

// When 32-bit offsets no longer suffice, copies the pages to a file with 64-bit offsets.
bool TiffJoiner::makeRoomFor(uint64_t bytes) {
    if (output_->isBig() || output_->bytes() + bytes + directoryBytes <= classicBytes_)
        return true;
    auto larger = std::make_unique<Output>(outputPath_, true);
    TiffErrors errors;
    TiffDescriptor access{.number = output_->descriptor()};
    const TiffHandle pages = openTiffDescriptor(access, "rm", errors);
    // Without a page yet, `pages` is null: the library does not open a mere header.
    if (!larger->isOpen())
        return false;
    if (pages) {
        do {
            if (!copyTiffPageTags(pages.get(), larger->tiff()) ||
                !copyTiffData(pages.get(), larger->tiff()) ||
                TIFFWriteDirectory(larger->tiff()) == 0)
                return false;
        } while (TIFFReadDirectory(pages.get()) != 0);
    }
    output_ = std::move(larger);
    return true;
}

TiffJoiner::Added TiffJoiner::append(TIFF* page, bool asOwnPage) {
    const uint64_t bytes = tiffDataBytes(page);
    if (bytes == 0)
        return Added::unreadable;
    if (!makeRoomFor(bytes))
        return Added::outputFailed;
    TiffPageTags tags;
    const uint64_t start = output_->bytes();
    const bool declared = !asOwnPage || readOwnTiffPageTags(page, tags);
    tags.horizontalDpi = tags.verticalDpi = declaredDpi;
    const bool copied = declared &&
                        (asOwnPage ? setTiffPageTags(output_->tiff(), tags)
                                   : copyTiffPageTags(page, output_->tiff())) &&
                        copyTiffData(page, output_->tiff());
    if (copied && TIFFWriteDirectory(output_->tiff()) != 0 && !output_->failed()) {
        hasPages_ = true;
        return Added::yes;
    }
    if (output_->failed() || copied || !output_->dropPage(start))
        return Added::outputFailed;
    return Added::unreadable;
}

// Pictures of other formats or layouts, decoded and encoded again.
TiffJoiner::Added TiffJoiner::appendEncoded(const std::string& pageFile) {
    std::optional<DecodedImage> picture = decodeOther_(pageFile);
    if (!picture)
        return Added::unreadable;
    const auto known = [](double dpi) { return dpi > 0 ? dpi : fallbackDpi; };
    std::optional<std::vector<uint8_t>> encoded =
        encodeTiff(*picture->image,
                   {.horizontalDpi = known(picture->horizontalDpi),
                    .verticalDpi = known(picture->verticalDpi)});
    picture.reset();
    if (!encoded)
        return Added::unreadable;
    TiffErrors errors;
    TiffMemory memory{.bytes = std::move(*encoded)};
    const TiffHandle tiff = openTiffMemory(memory, "rm", errors);
    return tiff ? append(tiff.get(), joining_ == TiffJoining::declared300Dpi) : Added::unreadable;
}

TiffJoiner::Added TiffJoiner::add(const std::string& pageFile) {
    if (!isOpen())
        return Added::outputFailed;
    const TiffFile page(pageFile);
    if (page.tiff() == nullptr)
        return appendEncoded(pageFile);
    if (joining_ == TiffJoining::unchanged)
        return hasPortableData(page.tiff()) ? append(page.tiff(), false) : appendEncoded(pageFile);
    TiffPageTags tags;
    return readOwnTiffPageTags(page.tiff(), tags) ? append(page.tiff(), true)
                                                  : appendEncoded(pageFile);
}

bool TiffJoiner::finish() {
    if (!isOpen())
        return false;
    // A header without a page is no valid TIFF file.
    const bool whole = hasPages_ && output_->close();
    output_.reset();
    return whole;
}

} // namespace paperline
