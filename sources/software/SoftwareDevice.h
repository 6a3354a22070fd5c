// A scanner without hardware: its pages are drawn, or come from a folder of pictures.
#pragma once

#include "sources/software/DocumentPage.h"
#include "sources/software/PictureStack.h"
#include "sources/worker/ScanDevice.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace paperline::sources {

class SoftwareDevice : public ScanDevice {
public:
    [[nodiscard]] ScanStatus open() override { return ScanStatus::good; }
    std::vector<OptionDescriptor> options() override;
    [[nodiscard]] ScanStatus setOption(const std::string& name, const std::string& value) override;
    [[nodiscard]] ScanStatus start() override;
    [[nodiscard]] ScanStatus readPage(PageSink& sink) override;
    void cancel() override { cancelled_ = true; }
    void stop() override { painter_.reset(); }
    std::string errorText() const override { return errorText_; }

private:
    struct ChoiceOption;
    struct NumberOption;
    static const std::vector<ChoiceOption>& choiceOptions();
    static const std::vector<NumberOption>& numberOptions();

    int pageCount() const; // of the batch
    PageFormat pageFormat() const;
    ScanStatus refuse(ScanStatus status, const std::string& text);
    ScanStatus setPages(const std::string& folder);
    ScanStatus sendPicture(size_t index, PageSink& sink);
    // Sends the rows that `fill` writes, spread over the delay.
    using FillRows = std::function<void(int32_t firstRow, std::span<uint8_t> rows)>;
    ScanStatus sendPage(const PageFormat& format, PageSink& sink, const FillRows& fill);
    // False at once when the batch is cancelled.
    bool waitUntil(std::chrono::steady_clock::time_point end) const;

    std::string source_ = "Automatic Document Feeder";
    std::string mode_ = "Color";
    double resolutionDpi_ = 300;
    double count_ = 3;
    bool countAsked_ = false; // else as many as there are pictures
    double widthMillimetres_ = 210;
    double heightMillimetres_ = 297;
    double delayMilliseconds_ = 0; // of each page
    std::string folder_;
    std::optional<PictureStack> pictures_;

    std::unique_ptr<DocumentPainter> painter_;
    int pagesRead_ = 0;
    std::atomic<bool> cancelled_{false};
    std::string errorText_;
};

} // namespace paperline::sources
