// Joins page files to one TIFF file, page by page: memory does not grow with their number.
#pragma once

#include "codecs/pixels/DecodedImage.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

typedef struct tiff TIFF; // of libtiff

namespace paperline {

enum class TiffJoining {
    declared300Dpi, // LZW pages declared 300/1 dots per inch, whatever their resolution
    unchanged,      // pages of TIFF files with their tags and data as stored
};

// Decodes a page file of another format; nothing when it cannot be read.
using PictureDecoder = std::function<std::optional<DecodedImage>(const std::string& path)>;

class TiffJoiner {
public:
    enum class Added { yes, unreadable, outputFailed };

    // Larger files need 64-bit offsets.
    static constexpr uint64_t mostClassicBytes = 0xFFFF0000U;

    // Writes a temporary file in the folder of `outputPath`; isOpen() tells whether that is
    // possible. Without finish() no file is left.
    TiffJoiner(const std::string& outputPath,
               TiffJoining joining,
               PictureDecoder decodeOther,
               uint64_t classicBytes = mostClassicBytes);
    ~TiffJoiner();
    TiffJoiner(const TiffJoiner&) = delete;
    TiffJoiner& operator=(const TiffJoiner&) = delete;

    bool isOpen() const;

    // Appends the first page of a TIFF file, or a picture that `decodeOther` reads. After
    // `unreadable` the joiner is as before.
    [[nodiscard]] Added add(const std::string& pageFile);

    // Renames the file to `outputPath`, replacing what is there. False: it has no page or could not
    // be written, and is removed.
    [[nodiscard]] bool finish();

private:
    class Output;

    Added append(TIFF* page, bool asOwnPage);
    Added appendEncoded(const std::string& pageFile);
    bool makeRoomFor(uint64_t bytes);

    std::string outputPath_;
    TiffJoining joining_;
    PictureDecoder decodeOther_;
    uint64_t classicBytes_;
    bool hasPages_ = false;
    std::unique_ptr<Output> output_;
};

} // namespace paperline
