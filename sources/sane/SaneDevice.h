// A SANE scanner as a ScanDevice. A document feeder delivers pages until it is empty, everything
// else one page a batch.
#pragma once

#include "sources/sane/PageReader.h"
#include "sources/sane/SaneScanner.h"
#include "sources/worker/ScanDevice.h"

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>

namespace paperline::sources {

class SaneDevice final : public ScanDevice {
public:
    SaneDevice(std::string device, std::unique_ptr<SaneScanner> scanner)
        : device_(std::move(device)), scanner_(std::move(scanner)) {}

    // Opens the scanner and sets the defaults (DeviceDefaults.h).
    [[nodiscard]] ScanStatus open() override;
    std::vector<OptionDescriptor> options() override { return scanner_->options(); }
    [[nodiscard]] ScanStatus setOption(const std::string& name, const std::string& value) override;
    [[nodiscard]] ScanStatus start() override;
    [[nodiscard]] ScanStatus readPage(PageSink& sink) override;
    // Waits until the page has ended, which a driver blocked in a read may delay for a while.
    void cancel() override;
    void stop() override;
    std::string errorText() const override { return errorText_; }

private:
    ScanStatus readNextPage(PageSink& sink);

    std::string device_;
    std::unique_ptr<SaneScanner> scanner_;
    std::atomic<bool> cancelled_{false};
    PageReader reader_{*scanner_, cancelled_};
    bool areaIsChosen_ = false; // by an option
    bool fromFeeder_ = false;
    int pagesOfBatch_ = 0;
    double horizontalDpi_ = 0, verticalDpi_ = 0;
    std::string errorText_;
    std::mutex mutex_; // guards reading_
    std::condition_variable readingEnded_;
    bool reading_ = false;
};

} // namespace paperline::sources
