// Texts of a language folder, which anybody may edit.
#include "base/StringsFile.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count) {
    const paperline::StringsFile file = paperline::parseStringsFile({bytes, count});
    if (file.damaged != (file.damagedLine > 0))
        std::abort();
    return 0;
}
