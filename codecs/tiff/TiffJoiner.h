// Gathers page files into one TIFF file, a page at a time: memory does not grow with their number.
#pragma once

#include "codecs/pixels/DecodedImage.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace paperline {

enum class TiffJoining {
    declared300Dpi, // LZW pages declared 300/1 dots per inch, whatever they were scanned at
    unchanged,      // a TIFF's page with its tags and its data as they are stored
};

// Decodes a page file that is no TIFF; nothing when it cannot be read.
using PictureDecoder = std::function<std::optional<DecodedImage>(const std::string& path)>;

class TiffJoiner {
public:
    enum class Added { yes, unreadable, outputFailed };

    // From here on the file needs 64-bit offsets.
    static constexpr uint64_t mostClassicBytes = 0xFFFF0000U;

    // Writes beside `outputPath`; isOpen() tells whether that can be done. What is not finished
    // leaves no file.
    TiffJoiner(const std::string& outputPath,
               TiffJoining joining,
               PictureDecoder decodeOther,
               uint64_t classicBytes = mostClassicBytes);
    ~TiffJoiner();
    TiffJoiner(const TiffJoiner&) = delete;
    TiffJoiner& operator=(const TiffJoiner&) = delete;

    bool isOpen() const;

    // Appends the first page of a TIFF file, or a picture that `decodeOther` reads. An unreadable
    // file adds nothing and may be tried again.
    [[nodiscard]] Added add(const std::string& pageFile);

    // Puts the file under its name, replacing what is there. False: it has no page or could not be
    // written, and nothing of it is left.
    [[nodiscard]] bool finish();

private:
    class Output;

    Added append(void* tiff, bool asOwnPage);
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
