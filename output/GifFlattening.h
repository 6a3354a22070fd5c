// Which systems flatten GIF pages onto white, by their version. The pages that scans give have no
// transparency, so flattening would change no pixel, and on this platform none of the versions
// applies.
#pragma once

#include <cstdint>
#include <string>

namespace paperline {

// The second component of a version text, read as a hexadecimal number: "10.9.5" gives 9, "10.13"
// gives 19. 0 without one.
int32_t gifSystemVersionNumber(const std::string& productVersion);

// Before version 10.7, and from 10.13 on by the hexadecimal reading.
bool flattensGif(int32_t gifSystemVersion);

// The page list's copies: the 10.6 series, by the system's packed version number (0x1068).
bool flattensTransferredGif(uint32_t packedSystemVersion);

} // namespace paperline
