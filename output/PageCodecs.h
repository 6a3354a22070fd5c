// What the writers need of the codecs, in one table: encoders, joiners, metadata. The table starts
// with the platform's; tests replace single members. An empty member is a format that cannot be
// written.
#pragma once

#include "output/Resolution.h"
#include "platform/BitmapImageRep.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace paperline {

// The library's quality that stands for the compression factor 0.25 of saved pages.
inline constexpr int jpegQuality = 60;

// Gathers page files into one file. What is not finished leaves no file.
class PageJoiner {
public:
    enum class Added { yes, unreadable, outputFailed };

    PageJoiner() = default;
    virtual ~PageJoiner() = default;
    PageJoiner(const PageJoiner&) = delete;
    PageJoiner& operator=(const PageJoiner&) = delete;

    // Appends the page (a TIFF's first one). An unreadable file adds nothing and may be tried
    // again.
    [[nodiscard]] virtual Added add(const std::string& pageFile) = 0;
    // Completes the file under its name. False: it could not be written, and none is there.
    [[nodiscard]] virtual bool finish() = 0;
};

struct PageCodecs {
    // A 1, 8 or 24-bit page as a whole file.
    using Encoder =
        std::function<std::optional<std::vector<uint8_t>>(const BitmapImageRep&, Density)>;
    Encoder jpeg;
    Encoder png;
    Encoder gif;
    Encoder tiff;

    // A joiner that writes to the path, replacing what is there; null when it cannot be opened.
    using JoinerFactory = std::function<std::unique_ptr<PageJoiner>(const std::string& outputPath)>;
    JoinerFactory tiffDeclared300Dpi; // LZW pages declared 300/1 dots per inch
    JoinerFactory tiffUnchanged;      // pages as they are
    JoinerFactory pdf;                // one page per image, in its size in points

    // Sets make and model in a JPEG (without touching the picture) or TIFF file, atomically.
    std::function<bool(const std::string& path, const std::string& make, const std::string& model)>
        setMakeAndModel;
};

PageCodecs& pageCodecs();
PageCodecs platformCodecs(); // the platform's; tests restore with it

} // namespace paperline
