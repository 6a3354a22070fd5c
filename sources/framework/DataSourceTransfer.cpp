// Image information and the three ways to transfer a page.
#include "platform/files/Descriptor.h"
#include "sources/framework/DataSource.h"
#include "sources/framework/FixedPoint.h"
#include "sources/framework/TiffPage.h"

#include <algorithm>
#include <cstring>

namespace paperline::sources {

using namespace twain;

namespace {

constexpr uint32_t mostExtendedInfos = 4096; // the standard names fewer than a hundred

// Creates or replaces a file, but not through a link.
bool writePageFile(const std::string& path,
                   std::span<const uint8_t> header,
                   std::span<const uint8_t> pixels) {
    Descriptor file = openFile(path, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW, 0666);
    const bool written =
        file.isOpen() && writeAll(file.number(), header) && writeAll(file.number(), pixels);
    return file.close() && written;
}

} // namespace

uint16_t DataSource::imageInfoTriplet(uint16_t, void* data) {
    const bool colour = page_.bitsPerPixel == 24;
    abi::ImageInfo info{};
    info.XResolution = toFix32(resolutionInUnits(page_.horizontalDpi, capabilities_.units()));
    info.YResolution = toFix32(resolutionInUnits(page_.verticalDpi, capabilities_.units()));
    info.ImageWidth = page_.widthPixels;
    info.ImageLength = page_.heightPixels;
    info.SamplesPerPixel = colour ? 3 : 1;
    for (int sample = 0; sample < info.SamplesPerPixel; ++sample)
        info.BitsPerSample[sample] = page_.bitsPerPixel == 1 ? 1 : 8;
    info.BitsPerPixel = static_cast<int16_t>(page_.bitsPerPixel);
    info.Planar = 0;
    info.PixelType = colour ? TWPT_RGB : page_.bitsPerPixel == 8 ? TWPT_GRAY : TWPT_BW;
    info.Compression = TWCP_NONE;
    std::memcpy(data, &info, sizeof info);
    return TWRC_SUCCESS;
}

uint16_t DataSource::memoryTransferTriplet(uint16_t, void* data) {
    if (pageSent_)
        return fail(TWCC_SEQERROR);
    auto& transfer = *static_cast<abi::ImageMemXfer*>(data);
    if (transfer.Memory.TheMem == nullptr || transfer.Memory.Length < page_.bytesPerRow())
        return fail(TWCC_BADVALUE);
    if ((transfer.Memory.Flags & TWMF_HANDLE) == 0)
        return sendStrip(transfer, static_cast<uint8_t*>(transfer.Memory.TheMem));
    const LockedHandle locked(manager_, transfer.Memory.TheMem);
    return locked.bytes() != nullptr ? sendStrip(transfer, locked.bytes()) : fail(TWCC_BADVALUE);
}

uint16_t DataSource::sendStrip(abi::ImageMemXfer& transfer, uint8_t* buffer) {
    const auto bytesPerRow = static_cast<uint64_t>(page_.bytesPerRow());
    const auto rowsLeft = static_cast<uint64_t>(page_.heightPixels - rowsSent_);
    const uint64_t rows = std::min<uint64_t>(transfer.Memory.Length / bytesPerRow, rowsLeft);
    const auto pixels = feed_->pixels();
    const uint64_t first = static_cast<uint64_t>(rowsSent_) * bytesPerRow;
    const uint64_t byteCount = rows * bytesPerRow;
    if (first + byteCount > pixels.size())
        return fail(TWCC_OPERATIONERROR);
    std::memcpy(buffer, pixels.data() + first, byteCount);

    transfer.Compression = TWCP_NONE;
    transfer.BytesPerRow = static_cast<uint32_t>(bytesPerRow);
    transfer.Columns = static_cast<uint32_t>(page_.widthPixels);
    transfer.Rows = static_cast<uint32_t>(rows);
    transfer.XOffset = 0;
    transfer.YOffset = static_cast<uint32_t>(rowsSent_);
    transfer.BytesWritten = static_cast<uint32_t>(byteCount);
    rowsSent_ += static_cast<int32_t>(rows);
    state_ = State::transferring;
    pageSent_ = rowsSent_ == page_.heightPixels;
    return pageSent_ ? TWRC_XFERDONE : TWRC_SUCCESS;
}

std::span<const uint8_t> DataSource::pagePixels() const {
    return feed_->pixels().first(static_cast<size_t>(pageByteCount(page_)));
}

uint16_t DataSource::nativeTransferTriplet(uint16_t, void* data) {
    const auto header = tiffHeader(page_);
    if (!header)
        return fail(TWCC_LOWMEMORY);
    const auto pixels = pagePixels();
    const abi::Handle handle =
        manager_.allocate(static_cast<uint32_t>(header->size() + pixels.size()));
    if (handle == nullptr)
        return fail(TWCC_LOWMEMORY);
    {
        const LockedHandle locked(manager_, handle);
        if (locked.bytes() == nullptr) {
            manager_.release(handle);
            return fail(TWCC_LOWMEMORY);
        }
        std::memcpy(locked.bytes(), header->data(), header->size());
        std::memcpy(locked.bytes() + header->size(), pixels.data(), pixels.size());
    }
    std::memcpy(data, &handle, sizeof handle);
    state_ = State::transferring;
    pageSent_ = true;
    return TWRC_XFERDONE;
}

uint16_t DataSource::fileTransferTriplet(uint16_t message) {
    if (message != MSG_GET)
        return fail(TWCC_BADPROTOCOL);
    if (state_ != State::transferReady)
        return fail(TWCC_SEQERROR);
    abi::SetupFileXfer setup{};
    setupFileTriplet(MSG_GET, &setup);
    const auto header = tiffHeader(page_);
    if (!header || !writePageFile(setup.FileName, *header, pagePixels()))
        return fail(TWCC_FILEWRITEERROR);
    state_ = State::transferring;
    pageSent_ = true;
    return TWRC_XFERDONE;
}

// There is no extended information: every item is answered as not supported.
uint16_t DataSource::extendedInfoTriplet(uint16_t, void* data) {
    auto* bytes = static_cast<uint8_t*>(data);
    abi::ExtImageInfoHeader header{};
    std::memcpy(&header, bytes, sizeof header);
    if (header.NumInfos > mostExtendedInfos)
        return fail(TWCC_BADVALUE);
    for (uint32_t index = 0; index < header.NumInfos; ++index) {
        uint8_t* place = bytes + sizeof header + index * sizeof(abi::Info);
        abi::Info info{};
        std::memcpy(&info, place, sizeof info);
        info.NumItems = 0;
        info.ReturnCode = TWRC_INFONOTSUPPORTED;
        info.Item = 0;
        std::memcpy(place, &info, sizeof info);
    }
    return TWRC_SUCCESS;
}

} // namespace paperline::sources
