#include "sources/software/SoftwareDevice.h"

#include "sources/framework/LocaleFreeText.h"

#include <algorithm>
#include <cmath>
#include <thread>

namespace paperline::sources {

namespace {

constexpr int32_t mostRowsPerStep = 64;
constexpr int32_t stepsOfPage = 50; // at least, where the page has as many rows

constexpr const char* flatbed = "Flatbed";

int32_t pixelCount(double millimetres, double dpi) {
    return std::max(1, static_cast<int32_t>(std::lround(millimetres / millimetresPerInch * dpi)));
}

OptionDescriptor textOption(const char* name, const char* title, const std::string& value) {
    OptionDescriptor option;
    option.name = name;
    option.title = title;
    option.value = value;
    return option;
}

} // namespace

struct SoftwareDevice::ChoiceOption {
    const char *name, *title;
    std::vector<std::string> choices;
    std::string SoftwareDevice::*value;
};

struct SoftwareDevice::NumberOption {
    const char *name, *title, *unit;
    double minimum, maximum;
    bool whole;
    double SoftwareDevice::*value;
};

const std::vector<SoftwareDevice::ChoiceOption>& SoftwareDevice::choiceOptions() {
    static const std::vector<ChoiceOption> table{
        {"source", "Scan source", {flatbed, "Automatic Document Feeder"}, &SoftwareDevice::source_},
        {"mode", "Scan mode", {"Lineart", "Gray", "Color"}, &SoftwareDevice::mode_},
    };
    return table;
}

const std::vector<SoftwareDevice::NumberOption>& SoftwareDevice::numberOptions() {
    using Device = SoftwareDevice;
    static const std::vector<NumberOption> table{
        {"resolution", "Resolution", "dpi", 50, 1200, true, &Device::resolutionDpi_},
        {"count", "Sheets in the feeder", "", 1, 10000, true, &Device::count_},
        {"width", "Sheet width", "mm", 20, 330, false, &Device::widthMillimetres_},
        {"height", "Sheet height", "mm", 20, 500, false, &Device::heightMillimetres_},
        {"delay", "Time for a page", "ms", 0, 60000, true, &Device::delayMilliseconds_},
    };
    return table;
}

std::vector<OptionDescriptor> SoftwareDevice::options() {
    std::vector<OptionDescriptor> options;
    for (const ChoiceOption& choice : choiceOptions()) {
        options.push_back(textOption(choice.name, choice.title, this->*choice.value));
        options.back().choices = choice.choices;
    }
    for (const NumberOption& number : numberOptions()) {
        const bool isCount = number.value == &SoftwareDevice::count_;
        OptionDescriptor option = textOption(
            number.name, number.title, numberText(isCount ? pageCount() : this->*number.value));
        option.kind = number.whole ? OptionKind::integer : OptionKind::fixed;
        option.unit = number.unit;
        option.hasRange = true;
        option.minimum = number.minimum;
        option.maximum = number.maximum;
        option.step = number.whole ? 1 : 0;
        options.push_back(option);
    }
    options.push_back(textOption("pages", "Folder of pictures to scan", folder_));
    return options;
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
    if (name == "pages")
        return setPages(value);
    for (const ChoiceOption& choice : choiceOptions())
        if (name == choice.name && std::find(choice.choices.begin(), choice.choices.end(), value) !=
                                       choice.choices.end()) {
            this->*choice.value = value;
            return ScanStatus::good;
        }
    const std::optional<double> number = numberFromText(value);
    for (const NumberOption& option : numberOptions())
        if (name == option.name && number && *number >= option.minimum &&
            *number <= option.maximum && (!option.whole || *number == std::floor(*number))) {
            this->*option.value = *number;
            countAsked_ = countAsked_ || option.value == &SoftwareDevice::count_;
            return ScanStatus::good;
        }
    return ScanStatus::invalid;
}

int SoftwareDevice::pageCount() const {
    if (pictures_ && pictures_->pageCount() == 0)
        return 0;
    if (source_ == flatbed)
        return 1;
    if (pictures_ && !countAsked_)
        return static_cast<int>(std::min<size_t>(pictures_->pageCount(), INT32_MAX));
    return static_cast<int>(count_);
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
    const std::chrono::milliseconds delay(static_cast<int64_t>(delayMilliseconds_));
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
