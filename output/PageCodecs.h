// What the writers need of the codecs, in one table: encoders, joiners, metadata. The table starts
// with the platform's; tests replace single members. An empty member is a format that cannot be
// written.
#pragma once

#include "codecs/pixels/BitmapImageRep.h"
#include "codecs/pixels/Geometry.h"
#include "codecs/pixels/PageJoiner.h"
#include "output/Resolution.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace paperline {

// The library's quality that stands for the compression factor 0.25 of saved pages: the lowest that
// leaves small print readable, coloured print included (measured; docs/formats.md has the table).
inline constexpr int jpegQuality = 70;

// A PDF file whose pages can be drawn into another.
class PdfSource {
public:
    PdfSource() = default;
    virtual ~PdfSource() = default;
    PdfSource(const PdfSource&) = delete;
    PdfSource& operator=(const PdfSource&) = delete;

    virtual int pageCount() const = 0;
    virtual Rect mediaBox(int page) const = 0; // pages count from 1
};

// A PDF file being drawn page by page; complete when closed. A page begun while another is open
// ends that one.
class PdfContext {
public:
    PdfContext() = default;
    virtual ~PdfContext() = default;
    PdfContext(const PdfContext&) = delete;
    PdfContext& operator=(const PdfContext&) = delete;

    virtual void beginPage(const Rect& mediaBox) = 0;
    virtual void drawPage(const PdfSource& source, int page) = 0;
    virtual void endPage() = 0;
    virtual void close() = 0;
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

    std::function<std::unique_ptr<PdfSource>(const std::string& path)> openPdf; // null: no PDF
    std::function<std::unique_ptr<PdfContext>(const std::string& path)> createPdfContext;
    // A document of one page of that size, filled with the image.
    std::function<std::optional<std::vector<uint8_t>>(const BitmapImageRep& image, Size pageSize)>
        pdfOfImage;

    // Sets make and model in a JPEG (without touching the picture) or TIFF file, atomically.
    std::function<bool(const std::string& path, const std::string& make, const std::string& model)>
        setMakeAndModel;
};

PageCodecs& pageCodecs();
PageCodecs platformCodecs(); // the platform's; tests restore with it

} // namespace paperline
