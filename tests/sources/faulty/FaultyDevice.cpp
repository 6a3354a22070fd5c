#include "tests/sources/faulty/FaultyDevice.h"

#include <array>
#include <chrono>
#include <cstdlib>
#include <string_view>
#include <thread>

namespace paperline::sources {

namespace {

struct StatusFault {
    std::string_view name;
    ScanStatus status;
    const char* text;
};

constexpr std::array<StatusFault, 11> statusFaults{{
    {"device-jam", ScanStatus::paperJam, "Paper is jammed in the feeder."},
    {"device-cover", ScanStatus::coverOpen, "The cover is open."},
    {"device-empty", ScanStatus::noMorePages, "The feeder is empty."},
    {"device-busy", ScanStatus::deviceBusy, "The scanner is in use."},
    {"device-denied", ScanStatus::accessDenied, "Access to the scanner is denied."},
    {"device-offline", ScanStatus::noSuchDevice, "The scanner is switched off."},
    {"device-error", ScanStatus::ioError, "The scanner does not answer."},
    {"device-memory", ScanStatus::noMemory, "The scanner has no memory left."},
    {"device-invalid", ScanStatus::invalid, "The scanner refuses its settings."},
    {"device-unsupported", ScanStatus::unsupported, "The scanner cannot do this."},
    {"device-cancel", ScanStatus::cancelled, "The scan was cancelled at the scanner."},
}};

} // namespace

std::vector<OptionDescriptor> FaultyDevice::options() {
    std::vector<OptionDescriptor> options = scanner_.options();
    OptionDescriptor& fault = options.emplace_back();
    fault.name = "fault";
    fault.title = "Misbehaviour";
    fault.value = faultText_;
    return options;
}

ScanStatus FaultyDevice::refuse(ScanStatus status, const std::string& text) {
    errorText_ = text;
    return status;
}

std::string FaultyDevice::errorText() const {
    return errorText_.empty() ? scanner_.errorText() : errorText_;
}

ScanStatus FaultyDevice::setOption(const std::string& name, const std::string& value) {
    errorText_.clear();
    if (name != "fault")
        return scanner_.setOption(name, value);
    auto faults = FaultList::parse(value);
    if (!faults)
        return refuse(ScanStatus::invalid, "There is no such fault.");
    faults_ = std::move(*faults);
    faultText_ = value;
    return misbehave(0);
}

ScanStatus FaultyDevice::start() {
    errorText_.clear();
    pagesRead_ = 0;
    return scanner_.start();
}

int FaultyDevice::pageCount() {
    return std::stoi(findOption(scanner_.options(), "count")->value);
}

ScanStatus FaultyDevice::misbehave(int pageNumber) {
    const int count = pageCount();
    for (const StatusFault& fault : statusFaults)
        if (faults_.find(fault.name, pageNumber, count) != nullptr)
            return refuse(fault.status, fault.text);
    if (faults_.find("device-crash", pageNumber, count) != nullptr)
        std::abort();
    if (faults_.find("device-hang", pageNumber, count) != nullptr)
        for (;;) // ignores even cancel, like a driver that waits for its hardware
            std::this_thread::sleep_for(std::chrono::hours(1));
    return ScanStatus::good;
}

ScanStatus FaultyDevice::readPage(PageSink& sink) {
    errorText_.clear();
    if (pagesRead_ < pageCount())
        if (const ScanStatus status = misbehave(++pagesRead_); status != ScanStatus::good)
            return status;
    return scanner_.readPage(sink);
}

} // namespace paperline::sources
