#include "platform/process/SystemLog.h"

#include "platform/files/Descriptor.h"

#include <string>
#include <unistd.h>

namespace paperline {

void systemLog(std::string_view line) {
    // One write, so that lines of several processes do not mix.
    std::string text(line);
    text += '\n';
    const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
    (void)writeAll(STDERR_FILENO, {bytes, text.size()});
}

} // namespace paperline
