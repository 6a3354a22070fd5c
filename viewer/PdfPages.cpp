#include "viewer/PdfPages.h"

#include <QFile>
#include <QPainter>
#include <QPdfDocument>

#include <algorithm>
#include <cmath>
#include <unordered_map>

#include <sys/stat.h>

namespace paperline {

namespace {

constexpr int maximumSidePixels = 16384;

// What tells one state of a file from another.
struct FileState {
    dev_t device = 0;
    ino_t file = 0;
    off_t size = 0;
    time_t seconds = 0;
    long nanoseconds = 0;
    bool operator==(const FileState&) const = default;
};

std::optional<FileState> fileState(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    return FileState{status.st_dev,
                     status.st_ino,
                     status.st_size,
                     status.st_mtim.tv_sec,
                     status.st_mtim.tv_nsec};
}

uint32_t pixelsOf(double points) {
    if (!std::isfinite(points) || points <= 0)
        return 0;
    return static_cast<uint32_t>(std::clamp(std::round(points), 1.0, 1e9));
}

QSize pictureSize(PixelSize page, int longSidePixels) {
    const double longSide = std::max(page.width, page.height);
    const double scale = std::clamp(longSidePixels, 1, maximumSidePixels) / longSide;
    const auto side = [scale](uint32_t pixels) {
        return std::max(1, static_cast<int>(std::lround(pixels * scale)));
    };
    return {side(page.width), side(page.height)};
}

} // namespace

PdfPages::PdfPages() = default;
PdfPages::~PdfPages() = default;

bool PdfPages::open(const std::string& path) {
    document_.reset();
    if (!fileState(path))
        return false; // a pipe or a folder would never end
    auto document = std::make_unique<QPdfDocument>();
    if (document->load(QFile::decodeName(path.c_str())) != QPdfDocument::Error::None ||
        document->pageCount() < 1)
        return false;
    document_ = std::move(document);
    return true;
}

int PdfPages::count() const {
    return document_ ? document_->pageCount() : 0;
}

PixelSize PdfPages::pixelSize(int pageIndex) const {
    if (pageIndex < 0 || pageIndex >= count())
        return {};
    const QSizeF points = document_->pagePointSize(pageIndex);
    return {pixelsOf(points.width()), pixelsOf(points.height())};
}

QImage PdfPages::draw(int pageIndex, int longSidePixels) const {
    const PixelSize page = pixelSize(pageIndex);
    if (page.width == 0 || page.height == 0)
        return {};
    const QSize size = pictureSize(page, longSidePixels);
    QImage white(size, QImage::Format_RGB32);
    if (white.isNull())
        return {};
    white.fill(Qt::white);
    // Nothing is painted where the page is empty, and nothing at all when its picture is damaged.
    const QImage drawn = document_->render(pageIndex, size);
    if (drawn.isNull())
        return {};
    QPainter painter(&white);
    painter.drawImage(QPoint(0, 0), drawn);
    return white;
}

const std::vector<PixelSize>& pdfPageSizes(const std::string& path) {
    struct Known {
        FileState state;
        std::vector<PixelSize> sizes;
    };
    constexpr size_t maximumKnownFiles = 1024;
    static std::unordered_map<std::string, Known> knownFiles;
    static const std::vector<PixelSize> none;

    const std::optional<FileState> state = fileState(path);
    if (!state) {
        knownFiles.erase(path);
        return none;
    }
    const auto found = knownFiles.find(path);
    if (found != knownFiles.end() && found->second.state == *state)
        return found->second.sizes;

    if (knownFiles.size() >= maximumKnownFiles)
        knownFiles.clear();
    Known& known = knownFiles[path];
    known = {*state, {}};
    PdfPages pages;
    if (pages.open(path)) {
        known.sizes.reserve(static_cast<size_t>(pages.count()));
        for (int i = 0; i < pages.count(); ++i)
            known.sizes.push_back(pages.pixelSize(i));
    }
    return known.sizes;
}

} // namespace paperline
