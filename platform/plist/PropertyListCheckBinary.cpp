#include "platform/plist/PropertyListCheck.h"

#include <bit>
#include <cmath>
#include <optional>
#include <string>

namespace paperline {
namespace {

// The file's last 32 bytes say where the table of object offsets is and how wide its entries are.
constexpr size_t trailerBytes = 32;
constexpr std::string_view magic = "bplist00";

enum Kind : unsigned {
    simple = 0x0,
    integer = 0x1,
    real = 0x2,
    date = 0x3,
    data = 0x4,
    asciiText = 0x5,
    utf16Text = 0x6,
    uid = 0x8,
    array = 0xA,
    dictionary = 0xD,
};

struct Object {
    unsigned kind;
    unsigned nibble;  // the low half of the marker byte
    size_t count;     // elements, bytes or UTF-16 units
    size_t payloadAt; // offset of what follows marker and count
};

class BinaryCheck {
public:
    explicit BinaryCheck(std::span<const uint8_t> bytes) : bytes_(bytes) {}

    bool document() {
        if (bytes_.size() < magic.size() + trailerBytes + 2)
            return false;
        const size_t trailer = bytes_.size() - trailerBytes;
        offsetBytes_ = bytes_[trailer + 6];
        referenceBytes_ = bytes_[trailer + 7];
        objects_ = number(trailer + 8, 8);
        const uint64_t top = number(trailer + 16, 8);
        tableAt_ = number(trailer + 24, 8);
        if (offsetBytes_ < 1 || offsetBytes_ > 8 || referenceBytes_ < 1 || referenceBytes_ > 8)
            return false;
        if (objects_ < 1 || objects_ > PropertyListLimits::values || top >= objects_)
            return false;
        if (tableAt_ < magic.size() + 1 || tableAt_ > trailer ||
            objects_ * offsetBytes_ > trailer - tableAt_)
            return false;
        return value(top, 0);
    }

private:
    // Big-endian; the caller knows that the bytes are there.
    uint64_t number(size_t at, size_t byteCount) const {
        uint64_t result = 0;
        for (size_t index = 0; index < byteCount; ++index)
            result = (result << 8U) | bytes_[at + index];
        return result;
    }

    // Objects lie between the magic and the table.
    bool holds(size_t at, uint64_t byteCount) const {
        return at <= tableAt_ && byteCount <= tableAt_ - at;
    }

    std::optional<Object> object(uint64_t index) const {
        if (index >= objects_)
            return std::nullopt;
        const uint64_t at =
            number(tableAt_ + static_cast<size_t>(index) * offsetBytes_, offsetBytes_);
        if (at < magic.size() || at >= tableAt_)
            return std::nullopt;
        const auto markerAt = static_cast<size_t>(at);
        const unsigned marker = bytes_[markerAt];
        Object result{marker >> 4U, marker & 0xFU, marker & 0xFU, markerAt + 1};
        const bool counted = result.kind >= data && result.kind != uid;
        if (!counted || result.nibble != 0xF)
            return result;
        // A long count follows as an integer object of its own.
        if (!holds(result.payloadAt, 1) || bytes_[result.payloadAt] >> 4U != integer)
            return std::nullopt;
        const size_t countBytes = size_t{1} << (bytes_[result.payloadAt] & 0xFU);
        if (countBytes > 8 || !holds(result.payloadAt + 1, countBytes))
            return std::nullopt;
        const uint64_t count = number(result.payloadAt + 1, countBytes);
        if (count > bytes_.size())
            return std::nullopt;
        result.count = static_cast<size_t>(count);
        result.payloadAt += 1 + countBytes;
        return result;
    }

    bool value(uint64_t index, int depth) {
        if (depth >= PropertyListLimits::depth || ++values_ > PropertyListLimits::values)
            return false;
        const std::optional<Object> found = object(index);
        if (!found)
            return false;
        switch (found->kind) {
        case array:
            return container(*found, found->count, depth);
        case dictionary:
            return container(*found, 2 * found->count, depth) && keysAreTexts(*found);
        case data:
            return payload(*found, found->count);
        case asciiText:
        case utf16Text:
            return text(*found);
        default:
            return scalar(*found);
        }
    }

    bool scalar(const Object& found) const {
        const size_t size = size_t{1} << found.nibble;
        switch (found.kind) {
        case simple:
            return found.nibble == 8 || found.nibble == 9; // false, true
        case integer: // of 16 bytes the upper half must be empty: an unsigned number
            return found.nibble <= 4 && holds(found.payloadAt, size) &&
                   (found.nibble < 4 || number(found.payloadAt, 8) == 0);
        case real:
            return (size == 4 || size == 8) && holds(found.payloadAt, size);
        case date:
            return size == 8 && holds(found.payloadAt, size) && isWritableDate(found);
        case uid:
            return (found.nibble == 0 || found.nibble == 1 || found.nibble == 3 ||
                    found.nibble == 7) &&
                   holds(found.payloadAt, found.nibble + 1);
        default:
            return false;
        }
    }

    bool isWritableDate(const Object& found) const {
        const auto seconds = std::bit_cast<double>(number(found.payloadAt, 8));
        return std::isfinite(seconds) && seconds >= firstDateSeconds && seconds <= lastDateSeconds;
    }

    bool container(const Object& found, size_t references, int depth) {
        if (!payload(found, static_cast<uint64_t>(references) * referenceBytes_))
            return false;
        for (size_t index = 0; index < references; ++index)
            if (!value(reference(found, index), depth + 1))
                return false;
        return true;
    }

    uint64_t reference(const Object& found, size_t index) const {
        return number(found.payloadAt + index * referenceBytes_, referenceBytes_);
    }

    // The keys' references come first, the values' after them.
    bool keysAreTexts(const Object& found) const {
        for (size_t index = 0; index < found.count; ++index) {
            const std::optional<Object> key = object(reference(found, index));
            if (!key || (key->kind != asciiText && key->kind != utf16Text))
                return false;
        }
        return true;
    }

    bool payload(const Object& found, uint64_t byteCount) {
        if (!holds(found.payloadAt, byteCount))
            return false;
        payloadBytes_ += static_cast<size_t>(byteCount);
        return payloadBytes_ <= PropertyListLimits::payloadBytes;
    }

    bool text(const Object& found) {
        const bool wide = found.kind == utf16Text;
        if (!payload(found, (wide ? 2 : 1) * static_cast<uint64_t>(found.count)))
            return false;
        if (wide)
            return isSoundUtf16(found);
        const auto characters = bytes_.subspan(found.payloadAt, found.count);
        for (const uint8_t c : characters)
            if (c >= 0x80 || (c < 0x20 && c != '\t' && c != '\n' && c != '\r'))
                return false;
        return true;
    }

    bool isSoundUtf16(const Object& found) const {
        for (size_t index = 0; index < found.count; ++index) {
            const uint64_t unit = number(found.payloadAt + 2 * index, 2);
            if (unit >= 0xD800 && unit <= 0xDBFF) {
                ++index;
                const uint64_t low =
                    index < found.count ? number(found.payloadAt + 2 * index, 2) : 0;
                if (low < 0xDC00 || low > 0xDFFF)
                    return false;
            } else if ((unit >= 0xDC00 && unit <= 0xDFFF) || unit >= 0xFFFE ||
                       (unit < 0x20 && unit != '\t' && unit != '\n' && unit != '\r')) {
                return false;
            }
        }
        return true;
    }

    std::span<const uint8_t> bytes_;
    size_t offsetBytes_ = 0;
    size_t referenceBytes_ = 0;
    uint64_t objects_ = 0;
    size_t tableAt_ = 0;
    size_t values_ = 0;
    size_t payloadBytes_ = 0;
};

} // namespace

bool isSoundBinaryPropertyList(std::span<const uint8_t> bytes) {
    if (bytes.size() > PropertyListLimits::fileBytes)
        return false;
    return BinaryCheck(bytes).document();
}

} // namespace paperline
