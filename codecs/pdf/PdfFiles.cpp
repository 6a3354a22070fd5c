#include "codecs/pdf/PdfFiles.h"

#include "codecs/jpeg/JpegHeader.h"
#include "codecs/pdf/PdfDocument.h"
#include "codecs/pictures/PictureReader.h"
#include "codecs/pixels/DecodedImage.h"
#include "platform/files/NewFile.h"

#include <array>
#include <span>
#include <utility>

namespace paperline {

namespace {

constexpr double pointsPerInch = 72.0;
constexpr uint64_t maximumPicturePixels = uint64_t{1} << 28;

struct Picture {
    PdfImage image;
    Size pagePoints;
};

Size pagePointsOf(double widthPixels,
                  double heightPixels,
                  double horizontalDpi,
                  double verticalDpi) {
    const auto points = [](double pixels, double dpi) {
        return dpi > 0 ? pixels * pointsPerInch / dpi : pixels;
    };
    return {points(widthPixels, horizontalDpi), points(heightPixels, verticalDpi)};
}

std::optional<JpegHeader> jpegHeaderOf(const std::string& path) {
    ByteReader file(path);
    return readJpegHeader(file);
}

Picture jpegPicture(const JpegHeader& header) {
    Picture picture;
    picture.image = {static_cast<int32_t>(header.size.width),
                     static_cast<int32_t>(header.size.height),
                     header.components,
                     8,
                     true,
                     header.components == 4 && header.hasAdobeMarker};
    picture.pagePoints = pagePointsOf(
        header.size.width, header.size.height, header.horizontalDpi, header.verticalDpi);
    return picture;
}

PdfImage imageOf(const BitmapImageRep& page) {
    PdfImage image;
    image.widthPixels = page.pixelsWide();
    image.heightPixels = page.pixelsHigh();
    image.components = page.samplesPerPixel();
    image.bitsPerComponent = page.bitsPerSample();
    return image;
}

std::optional<DecodedImage> decode(const std::string& path) {
    return readPicture(path, 0, maximumPicturePixels);
}

// False for truncated files, and for complete ones with bytes after the end of the image.
bool hasEndMark(const std::string& path) {
    const std::optional<RegularFile> file = openRegularFile(path);
    std::array<uint8_t, 2> end{};
    if (!file || file->status.st_size < static_cast<off_t>(end.size()))
        return false;
    const uint64_t position = static_cast<uint64_t>(file->status.st_size) - end.size();
    return readAt(file->descriptor.number(), position, end) == end.size() && end[0] == 0xFF &&
           end[1] == 0xD9;
}

// Common JPEG files are embedded as they are, without an end mark only if they can be decoded;
// other files by their pixels.
std::optional<Picture> inspect(const std::string& path) {
    const std::optional<JpegHeader> header = jpegHeaderOf(path);
    const bool isCommonJpeg = header && header->isCommon;
    if (isCommonJpeg && hasEndMark(path))
        return jpegPicture(*header);
    const std::optional<DecodedImage> decoded = decode(path);
    if (!decoded || !decoded->image)
        return std::nullopt;
    if (isCommonJpeg)
        return jpegPicture(*header);
    Picture picture;
    picture.image = imageOf(*decoded->image);
    picture.pagePoints = pagePointsOf(decoded->image->pixelsWide(),
                                      decoded->image->pixelsHigh(),
                                      decoded->horizontalDpi,
                                      decoded->verticalDpi);
    return picture;
}

bool giveFile(const std::string& path, const PdfSink& sink) {
    constexpr size_t chunkBytes = 256 * 1024;
    const std::optional<RegularFile> file = openRegularFile(path);
    if (!file)
        return false;
    std::vector<uint8_t> chunk(chunkBytes);
    for (;;) {
        const std::optional<size_t> count = readUpTo(file->descriptor.number(), chunk);
        if (!count || *count == 0)
            return count.has_value();
        if (!sink(chunk.data(), *count))
            return false;
    }
}

bool givePixels(const BitmapImageRep& page, const PdfSink& sink) {
    for (int32_t y = 0; y < page.pixelsHigh(); ++y)
        if (!sink(page.row(y).data(), page.packedRowBytes()))
            return false;
    return true;
}

bool givePicture(const std::string& path, const PdfSink& sink) {
    if (const std::optional<JpegHeader> header = jpegHeaderOf(path); header && header->isCommon)
        return giveFile(path, sink);
    const std::optional<DecodedImage> decoded = decode(path);
    return decoded && decoded->image && givePixels(*decoded->image, sink);
}

std::unique_ptr<NewFile> openOutput(const std::string& path) {
    auto file = std::make_unique<NewFile>(path, NewFile::Named{});
    return file->isOpen() ? std::move(file) : nullptr;
}

bool writeDocument(PdfDocument& document, NewFile& file, const PdfImageData& imageData) {
    const PdfSink sink = [&file](const uint8_t* bytes, size_t count) {
        return writeAll(file.descriptor(), {bytes, count});
    };
    return document.write(imageData, sink) && file.replaceTarget();
}

// For a document without images.
bool noImage(size_t /*image*/, const PdfSink& /*sink*/) {
    return false;
}

} // namespace

PdfJoiner::PdfJoiner(std::unique_ptr<NewFile> file, std::unique_ptr<PdfDocument> document)
    : file_(std::move(file)), document_(std::move(document)) {}
PdfJoiner::~PdfJoiner() = default;

std::unique_ptr<PdfJoiner> PdfJoiner::open(const std::string& outputPath, int64_t creationSeconds) {
    std::unique_ptr<NewFile> file = openOutput(outputPath);
    std::unique_ptr<PdfDocument> document = PdfDocument::make(creationSeconds);
    if (!file || !document)
        return nullptr;
    return std::unique_ptr<PdfJoiner>(new PdfJoiner(std::move(file), std::move(document)));
}

PdfJoiner::Added PdfJoiner::add(const std::string& pictureFile) {
    const std::optional<Picture> picture = inspect(pictureFile);
    if (!picture)
        return Added::unreadable;
    if (pictures_.empty())
        folder_ = pictureFile.substr(0, pictureFile.rfind('/') + 1);
    if (!document_->addImagePage(
            picture->image, picture->pagePoints.width, picture->pagePoints.height))
        return Added::outputFailed;
    // Only the names in the common folder are kept: short strings need no heap memory.
    const bool isBesideFirst = pictureFile.starts_with(folder_) &&
                               pictureFile.find('/', folder_.size()) == std::string::npos;
    pictures_.push_back(isBesideFirst ? pictureFile.substr(folder_.size()) : pictureFile);
    return Added::yes;
}

bool PdfJoiner::finish() {
    const PdfImageData imageData = [this](size_t image, const PdfSink& sink) {
        const std::string& name = pictures_[image];
        return givePicture(name.find('/') == std::string::npos ? folder_ + name : name, sink);
    };
    return writeDocument(*document_, *file_, imageData);
}

PdfPageSource::PdfPageSource(std::unique_ptr<PdfInput> input) : input_(std::move(input)) {}
PdfPageSource::~PdfPageSource() = default;

std::unique_ptr<PdfPageSource> PdfPageSource::open(const std::string& path) {
    if (!openRegularFile(path))
        return nullptr;
    std::unique_ptr<PdfInput> input = PdfInput::open(path);
    return input ? std::unique_ptr<PdfPageSource>(new PdfPageSource(std::move(input))) : nullptr;
}

int PdfPageSource::pageCount() const {
    return input_->pageCount();
}

Rect PdfPageSource::mediaBox(int page) const {
    const PdfBox box = input_->mediaBox(page);
    return {box.x, box.y, box.width, box.height};
}

PdfDrawing::PdfDrawing(std::unique_ptr<NewFile> file, std::unique_ptr<PdfDocument> document)
    : file_(std::move(file)), document_(std::move(document)) {}
PdfDrawing::~PdfDrawing() = default;

std::unique_ptr<PdfDrawing> PdfDrawing::open(const std::string& outputPath,
                                             int64_t creationSeconds) {
    std::unique_ptr<NewFile> file = openOutput(outputPath);
    std::unique_ptr<PdfDocument> document = PdfDocument::make(creationSeconds);
    if (!file || !document)
        return nullptr;
    return std::unique_ptr<PdfDrawing>(new PdfDrawing(std::move(file), std::move(document)));
}

void PdfDrawing::beginPage(const Rect& mediaBox) {
    isPageOpen_ =
        document_->addEmptyPage({mediaBox.x, mediaBox.y, mediaBox.width, mediaBox.height});
}

void PdfDrawing::drawPage(const PdfPageSource& source, int page) {
    if (isPageOpen_)
        (void)document_->drawOnLastPage(source.input(), page); // it stays empty
}

void PdfDrawing::endPage() {
    isPageOpen_ = false;
}

bool PdfDrawing::close() {
    return writeDocument(*document_, *file_, noImage);
}

std::optional<std::vector<uint8_t>>
pdfOfPicture(const BitmapImageRep& image, Size pageSizePoints, int64_t creationSeconds) {
    const std::unique_ptr<PdfDocument> document = PdfDocument::make(creationSeconds);
    if (!hasPageLayout(image) || !document ||
        !document->addImagePage(imageOf(image), pageSizePoints.width, pageSizePoints.height))
        return std::nullopt;
    std::vector<uint8_t> bytes;
    const PdfSink collect = [&bytes](const uint8_t* from, size_t count) {
        bytes.insert(bytes.end(), from, from + count);
        return true;
    };
    const PdfImageData pixels = [&image](size_t, const PdfSink& sink) {
        return givePixels(image, sink);
    };
    if (!document->write(pixels, collect))
        return std::nullopt;
    return bytes;
}

} // namespace paperline
