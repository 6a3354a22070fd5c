#include "platform/files/ByteReader.h"

#include <algorithm>

namespace paperline {
namespace {

constexpr size_t bufferBytes = 4096; // most headers

} // namespace

ByteReader::ByteReader(const std::string& path) : file_(path) {}

std::span<const uint8_t> ByteReader::bytes(uint64_t offset, size_t count) {
    const auto isHeld = [&] {
        return offset >= heldFrom_ && count <= held_.size() &&
               offset - heldFrom_ <= held_.size() - count;
    };
    if (!isHeld() && file_ && file_->isOpen()) {
        buffer_.resize(std::max(count, bufferBytes));
        heldFrom_ = offset;
        held_ = std::span(buffer_).first(file_->read(offset, buffer_));
    }
    if (!isHeld())
        return {};
    return held_.subspan(static_cast<size_t>(offset - heldFrom_), count);
}

bool ByteReader::hasText(uint64_t offset, std::string_view text) {
    const std::span<const uint8_t> found = bytes(offset, text.size());
    return std::equal(
        found.begin(), found.end(), text.begin(), text.end(), [](uint8_t byte, char c) {
            return byte == static_cast<uint8_t>(c);
        });
}

} // namespace paperline
