// Integers as files store them.
#pragma once

#include <bit>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <span>

namespace paperline {

template <std::unsigned_integral Number> Number inOrder(Number number, std::endian order) {
    if (order == std::endian::native)
        return number;
    if constexpr (sizeof(Number) == 8)
        return __builtin_bswap64(number);
    else if constexpr (sizeof(Number) == 4)
        return __builtin_bswap32(number);
    else if constexpr (sizeof(Number) == 2)
        return __builtin_bswap16(number);
    else
        return number;
}

// From the first sizeof(Number) bytes, which must exist.
template <std::unsigned_integral Number>
Number readInteger(std::span<const uint8_t> bytes, std::endian order) {
    Number number = 0;
    std::memcpy(&number, bytes.data(), sizeof number);
    return inOrder(number, order);
}

// To the first sizeof(Number) bytes, which must exist.
template <std::unsigned_integral Number>
void writeInteger(std::span<uint8_t> bytes, std::endian order, Number number) {
    number = inOrder(number, order);
    std::memcpy(bytes.data(), &number, sizeof number);
}

} // namespace paperline
