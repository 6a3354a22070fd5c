// A deflate coder for filtered rows of scanned pages. Noise leaves nothing worth searching for, so
// bytes are coded by their frequency alone; only stretches of zeros, which clean paper gives, are
// coded as repetitions. Many times faster than a general one, and no larger on such pages.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace paperline {

enum class DeflatePlace { within, last };

// One deflate block (RFC 1951) that starts and ends at a whole byte, so that blocks coded side by
// side can be put one behind the other; the last one ends the stream. `bytes` is not empty.
// Nothing when the memory cannot be had.
std::vector<uint8_t> deflateBlock(std::span<const uint8_t> bytes, DeflatePlace place);

} // namespace paperline
