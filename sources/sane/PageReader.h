// Reads one page from a SANE scanner: one frame, or one for each colour.
#pragma once

#include "sources/sane/SaneScanner.h"
#include "sources/worker/ScanDevice.h"

#include <atomic>
#include <string>
#include <vector>

namespace paperline::sources {

class PageReader {
public:
    // `cancelled` is checked between reads.
    PageReader(SaneScanner& scanner, const std::atomic<bool>& cancelled)
        : scanner_(scanner), cancelled_(cancelled) {}

    // noMorePages: the feeder is empty.
    [[nodiscard]] ScanStatus read(PageSink& sink, double horizontalDpi, double verticalDpi);
    std::string errorText() const { return errorText_; }

private:
    [[nodiscard]] ScanStatus startFrame();
    [[nodiscard]] ScanStatus checkParameters();
    [[nodiscard]] ScanStatus readColours(PageSink& sink);
    [[nodiscard]] ScanStatus readFrame(PageSink& sink);
    [[nodiscard]] ScanStatus readRowsStraight(PageSink& sink);
    [[nodiscard]] ScanStatus readLines(PageSink& sink);
    ScanStatus storeLines(PageSink& sink, std::span<const uint8_t> lines);
    SaneRead readSome(std::span<uint8_t> room);
    [[nodiscard]] ScanStatus fail(ScanStatus status, const std::string& text);

    SaneScanner& scanner_;
    const std::atomic<bool>& cancelled_;
    SaneParameters frame_;       // of the frame being read
    int32_t height_ = -1;        // of the page; -1: not known
    int64_t rowsOfFrame_ = 0;    // already in the sink
    bool hasData_ = false;       // of this page
    std::vector<uint8_t> lines_; // read, not in the sink yet
    std::string errorText_;
};

} // namespace paperline::sources
