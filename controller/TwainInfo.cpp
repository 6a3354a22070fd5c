#include "controller/TwainInfo.h"

#include <algorithm>
#include <cstring>

namespace paperline {
namespace {

void copyRaw(std::array<char, 256>& to, const TW_STR32& from) {
    std::memcpy(to.data(), from.bytes.data(), from.bytes.size());
}

void copyText(std::array<char, 256>& to, const TW_STR32& from) {
    const std::string text = from.text();
    std::memcpy(to.data(), text.data(), text.size());
}

std::string zeroTerminated(const std::array<char, 256>& field) {
    return {field.begin(), std::find(field.begin(), field.end(), '\0')};
}

} // namespace

TWAIN_INFO TWAIN_INFO::from(const TW_IDENTITY& identity) {
    TWAIN_INFO info;
    info.majorNum = identity.Version.MajorNum;
    info.minorNum = identity.Version.MinorNum;
    info.language = identity.Version.Language;
    info.country = identity.Version.Country;
    info.protocolMajor = identity.ProtocolMajor;
    info.protocolMinor = identity.ProtocolMinor;
    info.supportedGroups = static_cast<uint16_t>(identity.SupportedGroups);
    copyRaw(info.versionInfo, identity.Version.Info);
    copyRaw(info.manufacturer, identity.Manufacturer);
    copyText(info.productFamily, identity.ProductFamily);
    copyText(info.productName, identity.ProductName);
    return info;
}

std::string TWAIN_INFO::productNameText() const {
    return zeroTerminated(productName);
}

std::string TWAIN_INFO::productFamilyText() const {
    return zeroTerminated(productFamily);
}

std::string TWAIN_INFO::manufacturerText() const {
    TW_STR32 raw;
    std::memcpy(raw.bytes.data(), manufacturer.data(), raw.bytes.size());
    return raw.text();
}

} // namespace paperline
