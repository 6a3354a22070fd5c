#include "platform/process/SystemLog.h"

#include "platform/files/Descriptor.h"

#include <string>
#include <unistd.h>

namespace paperline {

void systemLog(std::string_view line) {
    // One write: lines of several processes must not mix.
    std::string text(line);
    text += '\n';
    (void)writeAll(STDERR_FILENO, text);
}

} // namespace paperline
