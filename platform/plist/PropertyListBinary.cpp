// The binary form "bplist00": objects, a table of their offsets, and a trailer of 32 bytes that
// says where both are. All numbers are big-endian.
#include "platform/host/Utf16.h"
#include "platform/plist/PropertyListForms.h"

#include <array>
#include <bit>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace paperline {
namespace {

using Bytes = std::span<const uint8_t>;
using Value = std::optional<PropertyListValue>;

uint64_t bigEndian(Bytes bytes) {
    uint64_t number = 0;
    for (const uint8_t byte : bytes)
        number = number << 8U | byte;
    return number;
}

std::string base64(Bytes bytes) {
    constexpr const char* digits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (size_t at = 0; at < bytes.size(); at += 3) {
        const size_t count = std::min<size_t>(3, bytes.size() - at);
        const auto bits =
            static_cast<uint32_t>(bigEndian(bytes.subspan(at, count)) << (8 * (3 - count)));
        for (size_t digit = 0; digit < 4; ++digit)
            text += digit <= count ? digits[bits >> (18 - 6 * digit) & 63U] : '=';
    }
    return text;
}

Value dateOf(double secondsSince2001) {
    using namespace std::chrono;
    constexpr sys_seconds reference{sys_days{year{2001} / 1 / 1}};
    constexpr double firstSecond = -63113904000.0; // of the year 1
    constexpr double lastSecond = 252423993599.0;  // of the year 9999
    if (!(secondsSince2001 >= firstSecond && secondsSince2001 <= lastSecond))
        return std::nullopt;
    const sys_seconds moment =
        reference + seconds(static_cast<int64_t>(std::floor(secondsSince2001)));
    const sys_days start = floor<days>(moment);
    const year_month_day day{start};
    const hh_mm_ss time{moment - start};
    std::array<char, 64> text;
    std::snprintf(text.data(),
                  text.size(),
                  "%04d-%02u-%02uT%02d:%02d:%02dZ",
                  static_cast<int>(day.year()),
                  static_cast<unsigned>(day.month()),
                  static_cast<unsigned>(day.day()),
                  static_cast<int>(time.hours().count()),
                  static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()));
    return PropertyListValue(PropertyListOther{"date", text.data()});
}

Value realOf(double number) {
    std::array<char, 32> text;
    char* const end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
    return PropertyListValue(PropertyListOther{"real", std::string(text.data(), end)});
}

class Reader {
public:
    explicit Reader(Bytes file) : file_(file) {}

    Value root() {
        constexpr size_t headerBytes = 8;
        constexpr size_t trailerBytes = 32;
        if (file_.size() < headerBytes + trailerBytes)
            return std::nullopt;
        const Bytes trailer = file_.last(trailerBytes);
        offsetBytes_ = trailer[6];
        referenceBytes_ = trailer[7];
        objectCount_ = bigEndian(trailer.subspan(8, 8));
        const uint64_t rootObject = bigEndian(trailer.subspan(16, 8));
        const uint64_t tableStart = bigEndian(trailer.subspan(24, 8));
        if (offsetBytes_ < 1 || offsetBytes_ > 8 || referenceBytes_ < 1 || referenceBytes_ > 8 ||
            tableStart < headerBytes || tableStart > file_.size() - trailerBytes)
            return std::nullopt;
        const uint64_t tableBytes = file_.size() - trailerBytes - tableStart;
        if (objectCount_ > tableBytes / offsetBytes_)
            return std::nullopt;
        objects_ = file_.first(static_cast<size_t>(tableStart));
        table_ = file_.subspan(objects_.size(), static_cast<size_t>(tableBytes));
        return object(rootObject, 0);
    }

private:
    // The bytes from `at` on; nothing when the objects end before.
    std::optional<Bytes> take(size_t& at, uint64_t count) const {
        if (at > objects_.size() || count > objects_.size() - at)
            return std::nullopt;
        const Bytes bytes = objects_.subspan(at, static_cast<size_t>(count));
        at += bytes.size();
        return bytes;
    }

    // A count of 15 in the marker stands for an integer object that follows.
    std::optional<uint64_t> countOf(uint8_t marker, size_t& at) const {
        if ((marker & 0x0FU) != 0x0F)
            return marker & 0x0FU;
        const auto size = take(at, 1);
        if (!size || (*size)[0] >> 4U != 0x1 || ((*size)[0] & 0x0FU) > 3)
            return std::nullopt;
        const auto number = take(at, uint64_t{1} << ((*size)[0] & 0x0FU));
        return number ? std::optional(bigEndian(*number)) : std::nullopt;
    }

    Value object(uint64_t index, int depth) {
        if (index >= objectCount_ || depth >= propertyListLimits.depth ||
            ++values_ > propertyListLimits.values)
            return std::nullopt;
        const uint64_t offset =
            bigEndian(table_.subspan(static_cast<size_t>(index) * offsetBytes_, offsetBytes_));
        if (offset < 8 || offset >= objects_.size())
            return std::nullopt;
        auto at = static_cast<size_t>(offset);
        const uint8_t marker = objects_[at++];
        switch (marker >> 4U) {
        case 0x0:
            return marker == 0x08 || marker == 0x09 ? Value(marker == 0x09) : std::nullopt;
        case 0x1:
            return integer(marker, at);
        case 0x2:
        case 0x3:
            return real(marker, at);
        case 0x8:
            return reference(marker, at);
        case 0x4:
        case 0x5:
        case 0x6:
            return text(marker, at);
        case 0xA:
        case 0xD:
            return container(marker, at, depth);
        default:
            return std::nullopt;
        }
    }

    // Up to 4 bytes are unsigned, 8 bytes are signed, 16 bytes hold what 63 bits do not.
    Value integer(uint8_t marker, size_t at) const {
        const unsigned power = marker & 0x0FU;
        const auto bytes = power <= 4 ? take(at, uint64_t{1} << power) : std::nullopt;
        if (!bytes || (power == 4 && bigEndian(bytes->first(8)) != 0))
            return std::nullopt;
        const uint64_t number = bigEndian(power == 4 ? bytes->last(8) : *bytes);
        if (power == 4 && number > static_cast<uint64_t>(INT64_MAX))
            return PropertyListValue(number);
        return PropertyListValue(static_cast<int64_t>(number));
    }

    Value real(uint8_t marker, size_t at) const {
        const bool isDouble = (marker & 0x0FU) == 3;
        const auto bytes = isDouble || marker == 0x22 ? take(at, isDouble ? 8 : 4) : std::nullopt;
        if (!bytes)
            return std::nullopt;
        if (marker == 0x22)
            return realOf(std::bit_cast<float>(static_cast<uint32_t>(bigEndian(*bytes))));
        const double number = std::bit_cast<double>(bigEndian(*bytes));
        return marker == 0x33 ? dateOf(number) : realOf(number);
    }

    // An archive's reference is a dictionary in XML.
    Value reference(uint8_t marker, size_t at) const {
        const unsigned count = (marker & 0x0FU) + 1;
        const auto bytes =
            std::has_single_bit(count) && count <= 8 ? take(at, count) : std::nullopt;
        if (!bytes)
            return std::nullopt;
        const auto number = static_cast<int64_t>(bigEndian(*bytes));
        return PropertyListValue(PropertyListDictionary{{"CF$UID", PropertyListValue(number)}});
    }

    Value text(uint8_t marker, size_t at) {
        const bool isUtf16 = marker >> 4U == 0x6;
        const auto count = countOf(marker, at);
        if (!count || *count > propertyListLimits.payloadBytes - payload_)
            return std::nullopt;
        payload_ += static_cast<size_t>(*count);
        const auto bytes = take(at, isUtf16 ? *count * 2 : *count);
        if (!bytes)
            return std::nullopt;
        if (marker >> 4U == 0x4)
            return PropertyListValue(PropertyListOther{"data", base64(*bytes)});
        DecodedText text{std::string(bytes->begin(), bytes->end()), true};
        if (isUtf16)
            text = decodeUtf16(*bytes, true);
        return text.whole && isXmlText(text.utf8) ? Value(std::move(text.utf8)) : std::nullopt;
    }

    Value container(uint8_t marker, size_t at, int depth) {
        const bool isDictionary = marker >> 4U == 0xD;
        const auto count = countOf(marker, at);
        if (!count || *count > propertyListLimits.values)
            return std::nullopt;
        const auto references = take(at, *count * referenceBytes_ * (isDictionary ? 2 : 1));
        if (!references)
            return std::nullopt;
        const auto child = [&](size_t position) {
            return object(
                bigEndian(references->subspan(position * referenceBytes_, referenceBytes_)),
                depth + 1);
        };
        PropertyListDictionary dictionary;
        PropertyListArray array;
        for (size_t position = 0; position < *count; ++position) {
            const Value key = isDictionary ? child(position) : Value("");
            Value value = child(isDictionary ? *count + position : position);
            if (!key || key->asString() == nullptr || !value)
                return std::nullopt;
            if (isDictionary)
                dictionary.insert_or_assign(*key->asString(), std::move(*value));
            else
                array.push_back(std::move(*value));
        }
        return isDictionary ? Value(std::move(dictionary)) : Value(std::move(array));
    }

    Bytes file_;
    Bytes objects_; // from the file's start, so that offsets count from its first byte
    Bytes table_;
    size_t offsetBytes_ = 0;
    size_t referenceBytes_ = 0;
    uint64_t objectCount_ = 0;
    size_t values_ = 0;
    size_t payload_ = 0;
};

} // namespace

std::optional<PropertyListValue> parseBinaryPropertyList(std::span<const uint8_t> bytes) {
    return bytes.size() <= propertyListLimits.fileBytes ? Reader(bytes).root() : std::nullopt;
}

} // namespace paperline
