#include "twain/manager/TwainRecords.h"

#include "platform/host/Utf.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string>
#include <string_view>

namespace paperline {
namespace {

namespace abi = twain::abi;

constexpr uint32_t mostInfos = 4096;
constexpr size_t firstInfo = offsetof(TW_EXTIMAGEINFO, Info);

// The target is zero-filled.
void copyText(const uint8_t* lengthAndText, char* target, size_t targetSize) {
    const size_t length = std::min<size_t>(lengthAndText[0], targetSize - 1);
    std::memcpy(target,
                lengthAndText + 1,
                ::strnlen(reinterpret_cast<const char*>(lengthAndText + 1), length));
}

std::string_view textOf(const char* field, size_t size) {
    return {field, ::strnlen(field, size)};
}

// The standard names no encoding: most sources use UTF-8, others Latin-1. A character that was cut
// at the end of a full field is dropped.
std::string asUtf8(std::string_view text) {
    constexpr size_t fullField = sizeof(abi::Str32) - 2; // 32 characters, and zeros to even length
    constexpr size_t longestCutCharacter = 3;
    const size_t valid = validUtf8Length(text);
    const size_t mayBeCut = text.size() >= fullField ? longestCutCharacter : 0;
    return text.size() - valid <= mayBeCut ? std::string(text.substr(0, valid))
                                           : utf8FromLatin1(text);
}

TW_STR32 fromStandard(const abi::Str32& text) {
    return TW_STR32::from(asUtf8(textOf(text, sizeof(text))));
}

// The fields have the same names in both layouts.
template <typename To, typename From> To sameImageInfo(const From& record) {
    To copy{};
    copy.XResolution = {record.XResolution.Whole, record.XResolution.Frac};
    copy.YResolution = {record.YResolution.Whole, record.YResolution.Frac};
    copy.ImageWidth = record.ImageWidth;
    copy.ImageLength = record.ImageLength;
    copy.SamplesPerPixel = record.SamplesPerPixel;
    std::copy(std::begin(record.BitsPerSample),
              std::end(record.BitsPerSample),
              std::begin(copy.BitsPerSample));
    copy.BitsPerPixel = record.BitsPerPixel;
    copy.Planar = record.Planar;
    copy.PixelType = record.PixelType;
    copy.Compression = record.Compression;
    return copy;
}

template <typename To, typename From> To sameStrip(const From& record) {
    return {record.Compression,
            record.BytesPerRow,
            record.Columns,
            record.Rows,
            record.XOffset,
            record.YOffset,
            record.BytesWritten,
            {record.Memory.Flags, record.Memory.Length, record.Memory.TheMem}};
}

} // namespace

abi::Identity toStandard(const TW_IDENTITY& record) {
    abi::Identity standard{};
    standard.Id = static_cast<uint32_t>(record.Id);
    standard.Version.MajorNum = record.Version.MajorNum;
    standard.Version.MinorNum = record.Version.MinorNum;
    standard.Version.Language = record.Version.Language;
    standard.Version.Country = record.Version.Country;
    copyText(record.Version.Info.bytes.data(), standard.Version.Info, sizeof(abi::Str32));
    standard.ProtocolMajor = record.ProtocolMajor;
    standard.ProtocolMinor = record.ProtocolMinor;
    standard.SupportedGroups = record.SupportedGroups;
    copyText(record.Manufacturer.bytes.data(), standard.Manufacturer, sizeof(abi::Str32));
    copyText(record.ProductFamily.bytes.data(), standard.ProductFamily, sizeof(abi::Str32));
    copyText(record.ProductName.bytes.data(), standard.ProductName, sizeof(abi::Str32));
    return standard;
}

TW_IDENTITY fromStandard(const abi::Identity& record) {
    TW_IDENTITY own{};
    own.Id = record.Id;
    own.Version.MajorNum = record.Version.MajorNum;
    own.Version.MinorNum = record.Version.MinorNum;
    own.Version.Language = record.Version.Language;
    own.Version.Country = record.Version.Country;
    own.Version.Info = fromStandard(record.Version.Info);
    own.ProtocolMajor = record.ProtocolMajor;
    own.ProtocolMinor = record.ProtocolMinor;
    own.SupportedGroups = record.SupportedGroups;
    own.Manufacturer = fromStandard(record.Manufacturer);
    own.ProductFamily = fromStandard(record.ProductFamily);
    own.ProductName = fromStandard(record.ProductName);
    return own;
}

abi::UserInterface toStandard(const TW_USERINTERFACE& record) {
    return {record.ShowUI, record.ModalUI, record.hParent};
}

TW_USERINTERFACE fromStandard(const abi::UserInterface& record) {
    return {record.ShowUI, record.ModalUI, record.hParent};
}

abi::ImageInfo toStandard(const TW_IMAGEINFO& record) {
    return sameImageInfo<abi::ImageInfo>(record);
}

TW_IMAGEINFO fromStandard(const abi::ImageInfo& record) {
    return sameImageInfo<TW_IMAGEINFO>(record);
}

abi::SetupMemXfer toStandard(const TW_SETUPMEMXFER& record) {
    return {record.MinBufSize, record.MaxBufSize, record.Preferred};
}

TW_SETUPMEMXFER fromStandard(const abi::SetupMemXfer& record) {
    return {record.MinBufSize, record.MaxBufSize, record.Preferred};
}

abi::ImageMemXfer toStandard(const TW_IMAGEMEMXFER& record) {
    return sameStrip<abi::ImageMemXfer>(record);
}

TW_IMAGEMEMXFER fromStandard(const abi::ImageMemXfer& record) {
    return sameStrip<TW_IMAGEMEMXFER>(record);
}

abi::SetupFileXfer toStandard(const TW_SETUPFILEXFER& record) {
    abi::SetupFileXfer standard{};
    copyText(record.FileName.data(), standard.FileName, sizeof(standard.FileName));
    standard.Format = record.Format;
    standard.VRefNum = record.VRefNum;
    return standard;
}

TW_SETUPFILEXFER fromStandard(const abi::SetupFileXfer& record) {
    TW_SETUPFILEXFER own{};
    std::string_view name = textOf(record.FileName, sizeof(record.FileName));
    name = name.substr(0, own.FileName.size() - 1);
    own.FileName[0] = static_cast<uint8_t>(name.size());
    std::memcpy(own.FileName.data() + 1, name.data(), name.size());
    own.Format = record.Format;
    own.VRefNum = record.VRefNum;
    return own;
}

abi::PendingXfers toStandard(const TW_PENDINGXFERS& record) {
    return {record.Count, record.EOJ};
}

TW_PENDINGXFERS fromStandard(const abi::PendingXfers& record) {
    return {record.Count, record.EOJ};
}

abi::Status toStandard(const TW_STATUS& record) {
    return {record.ConditionCode, record.Reserved};
}

TW_STATUS fromStandard(const abi::Status& record) {
    return {record.ConditionCode, record.Data};
}

std::optional<std::vector<uint8_t>> toStandard(const TW_EXTIMAGEINFO& record) {
    static_assert(sizeof(abi::Info) == sizeof(TW_INFO)); // only their offsets differ
    if (record.NumInfos > mostInfos)
        return std::nullopt;
    const size_t infoBytes = record.NumInfos * sizeof(TW_INFO);
    std::vector<uint8_t> standard(sizeof(abi::ExtImageInfoHeader) + infoBytes);
    std::memcpy(standard.data(), &record.NumInfos, sizeof(record.NumInfos));
    std::memcpy(standard.data() + sizeof(abi::ExtImageInfoHeader),
                reinterpret_cast<const uint8_t*>(&record) + firstInfo,
                infoBytes);
    return standard;
}

void fromStandard(const std::vector<uint8_t>& standard, TW_EXTIMAGEINFO& record) {
    // The source may have changed the count: the record has room for as many as before.
    const size_t infoBytes = record.NumInfos * sizeof(TW_INFO);
    uint32_t count = 0;
    std::memcpy(&count, standard.data(), sizeof(count));
    std::memcpy(reinterpret_cast<uint8_t*>(&record) + firstInfo,
                standard.data() + sizeof(abi::ExtImageInfoHeader),
                infoBytes);
    record.NumInfos = std::min(record.NumInfos, count);
}

} // namespace paperline
