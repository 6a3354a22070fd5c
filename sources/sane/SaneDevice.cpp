#include "sources/sane/SaneDevice.h"

#include "sources/sane/DeviceDefaults.h"

#include <chrono>

namespace paperline::sources {

ScanStatus SaneDevice::open() {
    const ScanStatus status = scanner_->open(device_);
    errorText_ = scanner_->errorText();
    if (status == ScanStatus::good)
        applyDefaults(*scanner_);
    return status;
}

ScanStatus SaneDevice::setOption(const std::string& name, const std::string& value) {
    const ScanStatus status = scanner_->setOption(name, value);
    errorText_ = scanner_->errorText();
    if (status == ScanStatus::good &&
        (name == "tl-x" || name == "tl-y" || name == "br-x" || name == "br-y"))
        areaIsChosen_ = true;
    return status;
}

ScanStatus SaneDevice::start() {
    cancelled_ = false;
    pagesOfBatch_ = 0;
    errorText_.clear();
    // The feeder's area differs from the flatbed's, and a mode may have changed it.
    if (!areaIsChosen_)
        applyWholeArea(*scanner_);
    const std::vector<OptionDescriptor> options = scanner_->options();
    const PageResolution resolution = pageResolution(options);
    horizontalDpi_ = resolution.horizontalDpi;
    verticalDpi_ = resolution.verticalDpi;
    fromFeeder_ = usesFeeder(options);
    return ScanStatus::good;
}

ScanStatus SaneDevice::readPage(PageSink& sink) {
    {
        const std::lock_guard lock(mutex_);
        reading_ = true;
    }
    const ScanStatus status = readNextPage(sink);
    {
        const std::lock_guard lock(mutex_);
        reading_ = false;
    }
    readingEnded_.notify_all();
    return status;
}

ScanStatus SaneDevice::readNextPage(PageSink& sink) {
    errorText_.clear();
    if (cancelled_)
        return ScanStatus::cancelled;
    if (pagesOfBatch_ > 0 && !fromFeeder_)
        return ScanStatus::noMorePages;
    const ScanStatus status = reader_.read(sink, horizontalDpi_, verticalDpi_);
    if (status == ScanStatus::good)
        ++pagesOfBatch_;
    else if (status != ScanStatus::noMorePages || pagesOfBatch_ == 0)
        errorText_ = reader_.errorText();
    return status;
}

void SaneDevice::cancel() {
    cancelled_ = true;
    std::unique_lock lock(mutex_);
    // The standard allows a cancel from any thread, but drivers handle it best in their own, and
    // most return from a read soon.
    if (!readingEnded_.wait_for(lock, std::chrono::seconds(2), [this] { return !reading_; }))
        scanner_->cancel();
}

void SaneDevice::stop() {
    scanner_->cancel();
}

} // namespace paperline::sources
