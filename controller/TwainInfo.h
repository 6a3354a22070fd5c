// What is kept of a data source's identity.
#pragma once

#include "twain/records/TwainTypes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace paperline {

struct TWAIN_INFO {
    uint16_t reserved = 0; // always 0
    uint16_t majorNum = 0;
    uint16_t minorNum = 0;
    uint16_t language = 0;
    uint16_t country = 0;
    uint16_t protocolMajor = 0;
    uint16_t protocolMinor = 0;
    uint16_t supportedGroups = 0;          // the low 16 bits
    std::array<char, 256> versionInfo{};   // raw 34 bytes, length byte first
    std::array<char, 256> manufacturer{};  // raw 34 bytes, length byte first
    std::array<char, 256> productFamily{}; // zero-terminated
    std::array<char, 256> productName{};   // zero-terminated

    static TWAIN_INFO from(const TW_IDENTITY& identity);
    std::string productNameText() const;
    std::string productFamilyText() const;
    std::string manufacturerText() const; // without the length byte
};
static_assert(sizeof(TWAIN_INFO) == 8 * 2 + 4 * 256);
static_assert(offsetof(TWAIN_INFO, versionInfo) == 16);
static_assert(offsetof(TWAIN_INFO, productName) == 784);

} // namespace paperline
