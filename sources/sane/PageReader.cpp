#include "sources/sane/PageReader.h"

#include "sources/sane/FrameRows.h"

#include <algorithm>

namespace paperline::sources {

namespace {

// Of one read: large enough to need few calls, small enough to show progress.
constexpr int64_t blockBytes = int64_t{1} << 20;
constexpr int64_t maximumLineBytes = int64_t{64} << 20;

} // namespace

ScanStatus PageReader::fail(ScanStatus status, const std::string& text) {
    errorText_ = text;
    return status;
}

ScanStatus PageReader::read(PageSink& sink, double horizontalDpi, double verticalDpi) {
    errorText_.clear();
    hasData_ = false;
    ScanStatus status = startFrame();
    if (status != ScanStatus::good)
        return status;
    height_ = frame_.lines;
    PageFormat format;
    format.widthPixels = frame_.pixelsPerLine;
    format.heightPixels = height_;
    format.bitsPerPixel = pageBits(frame_);
    format.horizontalDpi = horizontalDpi;
    format.verticalDpi = verticalDpi;
    if (!sink.begin(format))
        return fail(ScanStatus::noMemory, "There is not enough memory for the page.");
    const bool oneFrame = frame_.frame == SaneFrame::gray || frame_.frame == SaneFrame::rgb;
    status = oneFrame ? readFrame(sink) : readColours(sink);
    if (status != ScanStatus::good)
        return status;
    if (rowsOfFrame_ == 0)
        return fail(ScanStatus::ioError, "The scanner sent an empty page.");
    sink.finish(static_cast<int32_t>(rowsOfFrame_));
    return ScanStatus::good;
}

ScanStatus PageReader::startFrame() {
    if (cancelled_)
        return ScanStatus::cancelled;
    const ScanStatus status = scanner_.start();
    if (status != ScanStatus::good)
        return fail(status, scanner_.errorText());
    // Before the start the parameters may be estimates.
    const std::optional<SaneParameters> parameters = scanner_.parameters();
    if (!parameters)
        return fail(ScanStatus::ioError, scanner_.errorText());
    frame_ = *parameters;
    return checkParameters();
}

ScanStatus PageReader::checkParameters() {
    if (pageBits(frame_) == 0)
        return fail(ScanStatus::unsupported, "The scanner sends an unknown kind of page.");
    if (frame_.lines < -1)
        frame_.lines = -1;
    const int64_t needed = packedLineBytes(frame_);
    if (frame_.pixelsPerLine <= 0 || frame_.lines == 0 || frame_.bytesPerLine < needed ||
        frame_.bytesPerLine > maximumLineBytes)
        return fail(ScanStatus::ioError, "The scanner sends a page of an impossible size.");
    return ScanStatus::good;
}

// Three frames, one for each colour, in any order; the shortest gives the page's height.
ScanStatus PageReader::readColours(PageSink& sink) {
    const SaneParameters first = frame_;
    unsigned coloursSeen = 0;
    int64_t rows = INT64_MAX;
    for (;;) {
        coloursSeen |= 1U << static_cast<unsigned>(frame_.frame);
        const ScanStatus status = readFrame(sink);
        if (status != ScanStatus::good)
            return status;
        rows = std::min(rows, rowsOfFrame_);
        if (frame_.lastFrame)
            break;
        if (const ScanStatus next = startFrame(); next != ScanStatus::good)
            // An empty feeder in the middle of a page is a failure.
            return next == ScanStatus::noMorePages ? ScanStatus::ioError : next;
        if (frame_.pixelsPerLine != first.pixelsPerLine || pageBits(frame_) != 24 ||
            frame_.frame == SaneFrame::rgb ||
            (coloursSeen >> static_cast<unsigned>(frame_.frame) & 1) != 0)
            return fail(ScanStatus::ioError, "The scanner's colour frames do not fit together.");
    }
    constexpr unsigned allColours = 1U << static_cast<unsigned>(SaneFrame::red) |
                                    1U << static_cast<unsigned>(SaneFrame::green) |
                                    1U << static_cast<unsigned>(SaneFrame::blue);
    if (coloursSeen != allColours)
        return fail(ScanStatus::ioError, "The scanner did not send every colour.");
    rowsOfFrame_ = rows;
    return ScanStatus::good;
}

ScanStatus PageReader::readFrame(PageSink& sink) {
    rowsOfFrame_ = 0;
    return linesAreRows(frame_) ? readRowsStraight(sink) : readLines(sink);
}

// Until there is data, the frame's end, or a failure.
SaneRead PageReader::readSome(std::span<uint8_t> room) {
    for (;;) {
        if (cancelled_)
            return {ScanStatus::cancelled, false, 0};
        SaneRead result = scanner_.read(room);
        if (result.status != ScanStatus::good) {
            errorText_ = scanner_.errorText();
            if (result.status == ScanStatus::noMorePages && hasData_) {
                errorText_ = "The document feeder ran empty in the middle of a page.";
                result.status = ScanStatus::ioError;
            }
            return result;
        }
        if (result.endOfFrame || result.count > 0) {
            hasData_ = hasData_ || result.count > 0;
            return result;
        }
        scanner_.waitForData();
    }
}

// Directly into the page's memory.
ScanStatus PageReader::readRowsStraight(PageSink& sink) {
    const int64_t rowBytes = frame_.bytesPerLine;
    const int64_t rowsPerBlock = std::max<int64_t>(1, blockBytes / rowBytes);
    for (int64_t offset = 0;;) {
        const int64_t row = offset / rowBytes;
        rowsOfFrame_ = row;
        const int64_t limit = height_ >= 0 ? height_ : INT32_MAX;
        std::span<uint8_t> room;
        if (row < limit) {
            const int64_t count = std::min(rowsPerBlock, limit - row);
            room = sink.rows(static_cast<int32_t>(row), static_cast<int32_t>(count));
            if (room.empty())
                return fail(ScanStatus::noMemory, "There is not enough memory for the page.");
            room = room.subspan(static_cast<size_t>(offset % rowBytes));
        } else {
            // Rows beyond the announced height are read and dropped.
            lines_.resize(blockBytes);
            room = lines_;
        }
        const SaneRead result = readSome(room);
        if (result.status != ScanStatus::good || result.endOfFrame)
            return result.status;
        if (row < limit)
            offset += static_cast<int64_t>(result.count);
    }
}

// Line by line: padded lines, other depths, single colours.
ScanStatus PageReader::readLines(PageSink& sink) {
    const auto lineBytes = static_cast<size_t>(frame_.bytesPerLine);
    const size_t linesPerBlock = std::max<size_t>(1, blockBytes / 4 / lineBytes);
    lines_.resize(linesPerBlock * lineBytes);
    for (size_t filled = 0;;) {
        const SaneRead result = readSome(std::span(lines_).subspan(filled));
        if (result.status != ScanStatus::good || result.endOfFrame)
            return result.status;
        filled += result.count;
        const size_t whole = filled / lineBytes * lineBytes;
        const ScanStatus status = storeLines(sink, std::span(lines_).first(whole));
        if (status != ScanStatus::good)
            return status;
        std::copy(lines_.begin() + static_cast<std::ptrdiff_t>(whole),
                  lines_.begin() + static_cast<std::ptrdiff_t>(filled),
                  lines_.begin());
        filled -= whole;
    }
}

ScanStatus PageReader::storeLines(PageSink& sink, std::span<const uint8_t> lines) {
    const auto lineBytes = static_cast<size_t>(frame_.bytesPerLine);
    const auto packedBytes = static_cast<size_t>(packedLineBytes(frame_));
    const int64_t limit = height_ >= 0 ? height_ : INT32_MAX;
    for (; !lines.empty() && rowsOfFrame_ < limit; lines = lines.subspan(lineBytes)) {
        const std::span<uint8_t> row = sink.rows(static_cast<int32_t>(rowsOfFrame_), 1);
        if (row.empty())
            return fail(ScanStatus::noMemory, "There is not enough memory for the page.");
        lineToRow(frame_, lines.first(packedBytes), row);
        ++rowsOfFrame_;
    }
    return ScanStatus::good;
}

} // namespace paperline::sources
