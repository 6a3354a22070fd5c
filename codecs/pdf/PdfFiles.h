// PDF files: pictures gathered into one file, pages drawn into another, an image as a document.
#pragma once

#include "codecs/pixels/BitmapImageRep.h"
#include "codecs/pixels/Geometry.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace paperline {

class NewFile;
class PdfDocument;
class PdfInput;

// One page per picture file, in the size that the picture's resolution gives it (72 dots per inch
// when it names none). JPEG data goes in as it is. Pictures are read when the file is written: they
// must stay where they are until then.
class PdfJoiner {
public:
    enum class Added { yes, unreadable, outputFailed };

    ~PdfJoiner();
    PdfJoiner(const PdfJoiner&) = delete;
    PdfJoiner& operator=(const PdfJoiner&) = delete;

    // Null when no file can be made in the folder of that path.
    [[nodiscard]] static std::unique_ptr<PdfJoiner> open(const std::string& outputPath,
                                                         int64_t creationSeconds);

    [[nodiscard]] Added add(const std::string& pictureFile);
    // Puts the whole file under its name, over what is there. False: it could not be written, and
    // what had the name keeps it.
    [[nodiscard]] bool finish();

private:
    PdfJoiner(std::unique_ptr<NewFile> file, std::unique_ptr<PdfDocument> document);
    std::unique_ptr<NewFile> file_;
    std::unique_ptr<PdfDocument> document_;
    std::string folder_;                // of the first picture, with its slash
    std::vector<std::string> pictures_; // in page order; without a slash they lie in that folder
};

// A PDF file as a source of pages, told by its content. Pages count from 1.
class PdfPageSource {
public:
    ~PdfPageSource();
    PdfPageSource(const PdfPageSource&) = delete;
    PdfPageSource& operator=(const PdfPageSource&) = delete;

    [[nodiscard]] static std::unique_ptr<PdfPageSource> open(const std::string& path);
    int pageCount() const;
    Rect mediaBox(int page) const;
    const PdfInput& input() const { return *input_; }

private:
    explicit PdfPageSource(std::unique_ptr<PdfInput> input);
    std::unique_ptr<PdfInput> input_;
};

// A PDF file being drawn. A page begun while another is open ends that one; what is drawn outside a
// page is lost.
class PdfDrawing {
public:
    ~PdfDrawing();
    PdfDrawing(const PdfDrawing&) = delete;
    PdfDrawing& operator=(const PdfDrawing&) = delete;

    [[nodiscard]] static std::unique_ptr<PdfDrawing> open(const std::string& outputPath,
                                                          int64_t creationSeconds);
    void beginPage(const Rect& mediaBox);
    void drawPage(const PdfPageSource& source, int page);
    void endPage();
    // As PdfJoiner::finish.
    [[nodiscard]] bool close();

private:
    PdfDrawing(std::unique_ptr<NewFile> file, std::unique_ptr<PdfDocument> document);
    std::unique_ptr<NewFile> file_;
    std::unique_ptr<PdfDocument> document_;
    bool isPageOpen_ = false;
};

// A document of one page that the 1, 8 or 24-bit image fills. Nothing for another layout or when
// memory runs out.
[[nodiscard]] std::optional<std::vector<uint8_t>>
pdfOfPicture(const BitmapImageRep& image, Size pageSizePoints, int64_t creationSeconds);

} // namespace paperline
