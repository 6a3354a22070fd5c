#include "sources/software/SoftwareDevice.h"

#include "sources/software/SoftwareOptions.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <thread>

namespace paperline::sources {

namespace {

constexpr int32_t mostRowsPerStep = 64;
constexpr int32_t stepsOfPage = 50; // at least, where the page has as many rows

int32_t pixelCount(double millimetres, int dpi) {
    return std::max(1, static_cast<int32_t>(std::lround(millimetres / millimetresPerInch * dpi)));
}

} // namespace

std::vector<OptionDescriptor> SoftwareDevice::options() {
    return {
        choiceOption("source", "Scan source", source_, sourceNames()),
        choiceOption("mode", "Scan mode", mode_, modeNames()),
        numberOption({"resolution", "Resolution", "dpi"}, resolutionDpi_, resolutionRange),
        numberOption({"count", "Sheets in the feeder", ""}, pageCount(), countRange),
        numberOption({"width", "Sheet width", "mm"}, widthMillimetres_, widthRange),
        numberOption({"height", "Sheet height", "mm"}, heightMillimetres_, heightRange),
        textOption("pages", "Folder of pictures to scan", folder_),
        numberOption({"delay", "Time that a page takes", "ms"}, delayMilliseconds_, delayRange),
    };
}

ScanStatus SoftwareDevice::refuse(ScanStatus status, const std::string& text) {
    errorText_ = text;
    return status;
}

ScanStatus SoftwareDevice::setPages(const std::string& folder) {
    if (folder.empty()) {
        pictures_.reset();
    } else if (auto pictures = PictureStack::load(folder)) {
        pictures_ = std::move(pictures);
    } else {
        return refuse(ScanStatus::invalid, "The folder cannot be read.");
    }
    folder_ = folder;
    return ScanStatus::good;
}

ScanStatus SoftwareDevice::setOption(const std::string& name, const std::string& value) {
    errorText_.clear();
    bool taken = false;
    if (name == "source") {
        taken = takeChoice(value, sourceNames(), source_);
    } else if (name == "mode") {
        taken = takeChoice(value, modeNames(), mode_);
    } else if (name == "resolution") {
        taken = takeWhole(value, resolutionRange, resolutionDpi_);
    } else if (name == "count") {
        taken = takeWhole(value, countRange, count_);
        countAsked_ = countAsked_ || taken;
    } else if (name == "width") {
        taken = takeNumber(value, widthRange, widthMillimetres_);
    } else if (name == "height") {
        taken = takeNumber(value, heightRange, heightMillimetres_);
    } else if (name == "pages") {
        return setPages(value);
    } else if (name == "delay") {
        taken = takeWhole(value, delayRange, delayMilliseconds_);
    }
    return taken ? ScanStatus::good : ScanStatus::invalid;
}

bool SoftwareDevice::usesFeeder() const {
    return source_ != sourceNames().front();
}

int SoftwareDevice::pageCount() const {
    if (pictures_ && pictures_->pageCount() == 0)
        return 0;
    if (!usesFeeder())
        return 1;
    if (pictures_ && !countAsked_)
        return static_cast<int>(std::min<size_t>(pictures_->pageCount(), INT32_MAX));
    return count_;
}

PageFormat SoftwareDevice::pageFormat() const {
    PageFormat format;
    format.widthPixels = pixelCount(widthMillimetres_, resolutionDpi_);
    format.heightPixels = pixelCount(heightMillimetres_, resolutionDpi_);
    format.bitsPerPixel = mode_ == "Color" ? 24 : mode_ == "Gray" ? 8 : 1;
    format.horizontalDpi = format.verticalDpi = resolutionDpi_;
    return format;
}

ScanStatus SoftwareDevice::start() {
    pagesRead_ = 0;
    cancelled_ = false;
    errorText_.clear();
    if (!pictures_)
        painter_ = std::make_unique<DocumentPainter>(pageFormat());
    return ScanStatus::good;
}

bool SoftwareDevice::waitUntil(std::chrono::steady_clock::time_point end) const {
    constexpr std::chrono::milliseconds longestSleep{10};
    for (;;) {
        const auto left = end - std::chrono::steady_clock::now();
        if (cancelled_ || left.count() <= 0)
            return !cancelled_;
        std::this_thread::sleep_for(std::min<std::chrono::nanoseconds>(left, longestSleep));
    }
}

ScanStatus
SoftwareDevice::sendPage(const PageFormat& format, PageSink& sink, const FillRows& fill) {
    if (!sink.begin(format))
        return ScanStatus::noMemory;
    const auto start = std::chrono::steady_clock::now();
    const std::chrono::milliseconds delay(delayMilliseconds_);
    const int32_t step = std::clamp(format.heightPixels / stepsOfPage, 1, mostRowsPerStep);
    for (int32_t first = 0; first < format.heightPixels; first += step) {
        const int32_t end = std::min(first + step, format.heightPixels);
        if (!waitUntil(start + delay * end / format.heightPixels))
            return ScanStatus::cancelled;
        const auto rows = sink.rows(first, end - first);
        if (rows.empty())
            return ScanStatus::noMemory;
        fill(first, rows);
    }
    sink.finish(format.heightPixels);
    return ScanStatus::good;
}

ScanStatus SoftwareDevice::sendPicture(size_t index, PageSink& sink) {
    const auto picture = pictures_->read(index);
    if (picture == nullptr)
        return refuse(ScanStatus::ioError, "The picture cannot be read: " + pictures_->path(index));
    PageFormat format = pageFormat();
    format.widthPixels = picture->pixelsWide();
    format.heightPixels = picture->pixelsHigh();
    return sendPage(format, sink, [&](int32_t first, std::span<uint8_t> rows) {
        convertRows(*picture, first, format.bitsPerPixel, rows);
    });
}

ScanStatus SoftwareDevice::readPage(PageSink& sink) {
    errorText_.clear();
    if (cancelled_)
        return ScanStatus::cancelled;
    if (pagesRead_ >= pageCount())
        return ScanStatus::noMorePages;
    const int pageNumber = ++pagesRead_;
    if (pictures_)
        return sendPicture(static_cast<size_t>(pageNumber - 1) % pictures_->pageCount(), sink);
    painter_->setPage(pageNumber, pageCount());
    return sendPage(pageFormat(), sink, [this](int32_t first, std::span<uint8_t> rows) {
        painter_->paintRows(first, rows);
    });
}

} // namespace paperline::sources
