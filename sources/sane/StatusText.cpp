#include "sources/sane/StatusText.h"

#include <algorithm>
#include <array>

namespace paperline::sources {

namespace {

struct StatusRow {
    SaneStatus sane;
    ScanStatus scan;
    const char* text;
};

constexpr std::array<StatusRow, 12> table{{
    {SaneStatus::good, ScanStatus::good, ""},
    {SaneStatus::unsupported, ScanStatus::unsupported, "The scanner does not support this."},
    {SaneStatus::cancelled, ScanStatus::cancelled, "The scan was cancelled."},
    {SaneStatus::deviceBusy, ScanStatus::deviceBusy, "The scanner is busy."},
    {SaneStatus::inval, ScanStatus::invalid, "The scanner refused a setting."},
    {SaneStatus::eof, ScanStatus::ioError, "The scanner sent an empty page."},
    {SaneStatus::jammed, ScanStatus::paperJam, "Paper is jammed in the document feeder."},
    {SaneStatus::noDocs, ScanStatus::noMorePages, "The document feeder is empty."},
    {SaneStatus::coverOpen, ScanStatus::coverOpen, "The scanner's cover is open."},
    {SaneStatus::ioError, ScanStatus::ioError, "The connection to the scanner failed."},
    {SaneStatus::noMem, ScanStatus::noMemory, "There is not enough memory for the scan."},
    {SaneStatus::accessDenied, ScanStatus::accessDenied, "Access to the scanner is denied."},
}};

const StatusRow* rowOf(SaneStatus status) {
    const auto row = std::find_if(table.begin(), table.end(), [status](const StatusRow& entry) {
        return entry.sane == status;
    });
    return row == table.end() ? nullptr : &*row;
}

} // namespace

ScanStatus scanStatus(SaneStatus status) {
    const StatusRow* row = rowOf(status);
    return row == nullptr ? ScanStatus::ioError : row->scan;
}

const char* statusText(SaneStatus status) {
    const StatusRow* row = rowOf(status);
    return row == nullptr ? "The scanner reports an unknown failure." : row->text;
}

} // namespace paperline::sources
