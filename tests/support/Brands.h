// The brands that tests walk through. A brand that is added needs no change here.
#pragma once

#include <array>
#include <cstdint>

namespace paperline::testing_support {

inline constexpr uint32_t unlistedBrand = 1000; // a number without a row in the brand table
inline constexpr std::array<uint32_t, 9> everyBrand{0, 1, 2, 3, 4, 5, 6, 7, unlistedBrand};

} // namespace paperline::testing_support
