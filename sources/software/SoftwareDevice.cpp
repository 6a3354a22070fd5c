#include "sources/software/SoftwareDevice.h"

#include "sources/software/SoftwareOptions.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <thread>

namespace paperline::sources {

namespace {

constexpr int32_t rowsPerStep = 256;
constexpr double millimetresPerInch = 25.4;

struct StatusFault {
    std::string_view name;
    ScanStatus status;
    const char* text;
};

constexpr std::array<StatusFault, 11> statusFaults{{
    {"device-jam", ScanStatus::paperJam, "Paper is jammed in the feeder."},
    {"device-cover", ScanStatus::coverOpen, "The cover is open."},
    {"device-empty", ScanStatus::noMorePages, "The feeder is empty."},
    {"device-busy", ScanStatus::deviceBusy, "Somebody else uses the scanner."},
    {"device-denied", ScanStatus::accessDenied, "The scanner may not be used."},
    {"device-offline", ScanStatus::noSuchDevice, "The scanner is switched off."},
    {"device-error", ScanStatus::ioError, "The scanner does not answer."},
    {"device-memory", ScanStatus::noMemory, "The scanner has no memory left."},
    {"device-invalid", ScanStatus::invalid, "The scanner refuses its settings."},
    {"device-unsupported", ScanStatus::unsupported, "The scanner cannot do this."},
    {"device-cancel", ScanStatus::cancelled, "The scan was cancelled at the scanner."},
}};

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
        textOption("fault", "Misbehaviour", faultText_),
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

ScanStatus SoftwareDevice::setFaults(const std::string& text) {
    auto faults = FaultList::parse(text);
    if (!faults)
        return refuse(ScanStatus::invalid, "There is no such fault.");
    faults_ = std::move(*faults);
    faultText_ = text;
    return misbehave(0);
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
    } else if (name == "fault") {
        return setFaults(value);
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

bool SoftwareDevice::waitUnlessCancelled(int64_t milliseconds) const {
    constexpr std::chrono::milliseconds step{10};
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    while (!cancelled_ && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(step);
    return !cancelled_;
}

ScanStatus SoftwareDevice::misbehave(int pageNumber) {
    const int count = pageCount();
    for (const StatusFault& fault : statusFaults)
        if (faults_.find(fault.name, pageNumber, count) != nullptr)
            return refuse(fault.status, fault.text);
    if (faults_.find("device-crash", pageNumber, count) != nullptr)
        std::abort();
    if (faults_.find("device-hang", pageNumber, count) != nullptr)
        for (;;) // deaf even to cancel, as drivers are when they wait for their hardware
            std::this_thread::sleep_for(std::chrono::hours(1));
    if (const Fault* slow = faults_.find("device-slow", pageNumber, count))
        if (!waitUnlessCancelled(slow->value.value_or(500)))
            return ScanStatus::cancelled;
    return ScanStatus::good;
}

ScanStatus SoftwareDevice::drawPage(int pageNumber, PageSink& sink) {
    const PageFormat format = pageFormat();
    if (!sink.begin(format))
        return ScanStatus::noMemory;
    painter_->setPage(pageNumber, pageCount());
    for (int32_t first = 0; first < format.heightPixels; first += rowsPerStep) {
        if (cancelled_)
            return ScanStatus::cancelled;
        const auto rows = sink.rows(first, std::min(rowsPerStep, format.heightPixels - first));
        if (rows.empty())
            return ScanStatus::noMemory;
        painter_->paintRows(first, rows);
    }
    sink.finish(format.heightPixels);
    return ScanStatus::good;
}

ScanStatus SoftwareDevice::readPage(PageSink& sink) {
    errorText_.clear();
    if (cancelled_)
        return ScanStatus::cancelled;
    if (pagesRead_ >= pageCount())
        return ScanStatus::noMorePages;
    const int pageNumber = ++pagesRead_;
    if (const ScanStatus status = misbehave(pageNumber); status != ScanStatus::good)
        return status;
    if (!pictures_)
        return drawPage(pageNumber, sink);
    const size_t index = static_cast<size_t>(pageNumber - 1) % pictures_->pageCount();
    const ScanStatus status = pictures_->deliver(index, pageFormat(), sink);
    if (status == ScanStatus::ioError)
        errorText_ = "The picture cannot be read: " + pictures_->path(index);
    return status;
}

} // namespace paperline::sources
