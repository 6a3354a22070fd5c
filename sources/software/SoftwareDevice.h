// A scanner without hardware: its sheets are drawn, or come from a folder of pictures.
#pragma once

#include "sources/software/DocumentPage.h"
#include "sources/software/Fault.h"
#include "sources/software/PictureStack.h"
#include "sources/worker/ScanDevice.h"

#include <atomic>
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
    bool usesFeeder() const;
    int pageCount() const; // of the batch
    PageFormat pageFormat() const;
    ScanStatus refuse(ScanStatus status, const std::string& text);
    ScanStatus setPages(const std::string& folder);
    ScanStatus setFaults(const std::string& text);
    ScanStatus misbehave(int pageNumber);
    bool waitUnlessCancelled(int64_t milliseconds) const;
    ScanStatus drawPage(int pageNumber, PageSink& sink);

    std::string source_ = "Automatic Document Feeder";
    std::string mode_ = "Color";
    int resolutionDpi_ = 300;
    int count_ = 3;
    bool countAsked_ = false; // else a folder's pictures are counted
    double widthMillimetres_ = 210;
    double heightMillimetres_ = 297;
    std::string folder_;
    std::optional<PictureStack> pictures_;
    std::string faultText_;
    FaultList faults_;

    std::unique_ptr<DocumentPainter> painter_;
    int pagesRead_ = 0;
    std::atomic<bool> cancelled_{false};
    std::string errorText_;
};

} // namespace paperline::sources
