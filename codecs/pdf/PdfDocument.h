// PDF documents by qpdf, built page by page and written without holding image data in memory. This
// header and its .cpp are compiled as C++17, which qpdf's headers need.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace paperline {

// The producer of every document. Its length is fixed: it is overwritten in place by 34 bytes.
inline constexpr char pdfProducer[] = "Paperline document scanning, Linux";
static_assert(sizeof(pdfProducer) == 34 + 1);

// A box in points; y grows upward.
struct PdfBox {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
};

// An image that fills its page.
struct PdfImage {
    int32_t widthPixels = 0;
    int32_t heightPixels = 0;
    int components = 1; // 1 grey, 3 RGB, 4 CMYK
    int bitsPerComponent = 8;
    bool isJpeg = false;     // the data is a JPEG file; else packed rows, 0 is black
    bool isInverted = false; // as Adobe stores CMYK
};

// Receives the next bytes; false: they cannot be written.
using PdfSink = std::function<bool(const uint8_t* bytes, size_t count)>;
// Passes the data of an image to the sink; images are numbered from 0 in the order of their pages.
// False: it cannot be read any more, or the sink failed.
using PdfImageData = std::function<bool(size_t image, const PdfSink& sink)>;

// A PDF file to draw pages from.
class PdfInput {
public:
    ~PdfInput();
    PdfInput(const PdfInput&) = delete;
    PdfInput& operator=(const PdfInput&) = delete;

    // Null when the file is not a PDF, needs a password, or is damaged beyond repair.
    [[nodiscard]] static std::unique_ptr<PdfInput> open(const std::string& path);

    int pageCount() const;
    PdfBox mediaBox(int page) const; // pages count from 1; US letter when the page has none

private:
    friend class PdfDocument;
    struct Library;
    explicit PdfInput(std::unique_ptr<Library> library);
    std::unique_ptr<Library> library_;
};

// The bytes depend on the pages and the creation time only.
class PdfDocument {
public:
    ~PdfDocument();
    PdfDocument(const PdfDocument&) = delete;
    PdfDocument& operator=(const PdfDocument&) = delete;

    // `creationSeconds` since the epoch, stored in UTC. Null when memory runs out.
    [[nodiscard]] static std::unique_ptr<PdfDocument> make(int64_t creationSeconds);

    // These return false when the library fails; the document stays as before.
    [[nodiscard]] bool addImagePage(const PdfImage& image, double widthPoints, double heightPoints);
    [[nodiscard]] bool addEmptyPage(const PdfBox& mediaBox);
    // Draws page `page` of the input, counted from 1, on the last empty page.
    [[nodiscard]] bool drawOnLastPage(const PdfInput& input, int page);

    // Writes the document to the sink. To be called once.
    [[nodiscard]] bool write(const PdfImageData& imageData, const PdfSink& sink);

private:
    struct Library;
    explicit PdfDocument(std::unique_ptr<Library> library);
    std::unique_ptr<Library> library_;
};

} // namespace paperline
