// The inner loop of swapping red and blue.
#pragma once

#include <cstddef>
#include <cstdint>

namespace paperline {

// Swaps bytes 0 and 2 of each of `count` consecutive groups of three.
void swapFirstAndThird(uint8_t* bytes, size_t count);

} // namespace paperline
