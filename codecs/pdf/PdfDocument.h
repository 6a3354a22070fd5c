// PDF documents by qpdf: built page by page, written in one go without holding any page's data.
// Compiled as C++17, which the library's headers need: no C++20 here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace paperline {

// The producer of every document. A patch of 34 bytes covers all of it.
inline constexpr char pdfProducer[] = "Paperline document scanning, Linux";
static_assert(sizeof(pdfProducer) == 34 + 1);

// A box in points; y grows upward.
struct PdfBox {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
};

// One picture that fills its page.
struct PdfImage {
    int32_t widthPixels = 0;
    int32_t heightPixels = 0;
    int components = 1; // 1 grey, 3 RGB, 4 CMYK
    int bitsPerComponent = 8;
    bool isJpeg = false; // the data is a whole JPEG file; else rows packed to whole bytes, 0 black
    bool isInverted = false; // CMYK holds light, not ink
};

// Takes the next bytes; false: no more can be taken.
using PdfSink = std::function<bool(const uint8_t* bytes, size_t count)>;
// Hands over all data of the image of that number, counted from 0 in the order of their pages.
// False: it cannot be read any more, or the sink refused.
using PdfImageData = std::function<bool(size_t image, const PdfSink& sink)>;

// A PDF file to draw pages from.
class PdfInput {
public:
    ~PdfInput();
    PdfInput(const PdfInput&) = delete;
    PdfInput& operator=(const PdfInput&) = delete;

    // Null when the file is no PDF, needs a password, or is damaged beyond repair.
    [[nodiscard]] static std::unique_ptr<PdfInput> open(const std::string& path);

    int pageCount() const;
    PdfBox mediaBox(int page) const; // pages count from 1; US letter when the page has none

private:
    friend class PdfDocument;
    struct Library;
    explicit PdfInput(std::unique_ptr<Library> library);
    std::unique_ptr<Library> library_;
};

// Equal pages and an equal time give equal bytes.
class PdfDocument {
public:
    ~PdfDocument();
    PdfDocument(const PdfDocument&) = delete;
    PdfDocument& operator=(const PdfDocument&) = delete;

    // `creationSeconds` since the epoch; stored in universal time. Null: no memory.
    [[nodiscard]] static std::unique_ptr<PdfDocument> make(int64_t creationSeconds);

    // All of them: false when the library refused, and the document is as good as before.
    [[nodiscard]] bool addImagePage(const PdfImage& image, double widthPoints, double heightPoints);
    [[nodiscard]] bool addEmptyPage(const PdfBox& mediaBox);
    // Draws onto the last empty page, in the other page's coordinates.
    [[nodiscard]] bool drawOnLastPage(const PdfInput& input, int page);

    // Writes the whole document to the sink. May be called once.
    [[nodiscard]] bool write(const PdfImageData& imageData, const PdfSink& sink);

private:
    struct Library;
    explicit PdfDocument(std::unique_ptr<Library> library);
    std::unique_ptr<Library> library_;
};

} // namespace paperline
