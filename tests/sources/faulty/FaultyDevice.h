// The software scanner with one more option, `fault`: its device fails as that says.
#pragma once

#include "sources/software/SoftwareDevice.h"
#include "tests/sources/faulty/Fault.h"

#include <string>

namespace paperline::sources {

class FaultyDevice : public ScanDevice {
public:
    [[nodiscard]] ScanStatus open() override { return scanner_.open(); }
    std::vector<OptionDescriptor> options() override;
    [[nodiscard]] ScanStatus setOption(const std::string& name, const std::string& value) override;
    [[nodiscard]] ScanStatus start() override;
    [[nodiscard]] ScanStatus readPage(PageSink& sink) override;
    void cancel() override { scanner_.cancel(); }
    void stop() override { scanner_.stop(); }
    std::string errorText() const override;

private:
    ScanStatus refuse(ScanStatus status, const std::string& text);
    int pageCount();
    ScanStatus misbehave(int pageNumber);

    SoftwareDevice scanner_;
    std::string faultText_;
    FaultList faults_;
    int pagesRead_ = 0;
    std::string errorText_; // empty: the scanner's own counts
};

} // namespace paperline::sources
