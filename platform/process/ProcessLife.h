// Whether another process runs.
#pragma once

#include <sys/types.h>

namespace paperline {

// False for a zombie: an orphan's new parent may collect it late or never.
bool processRuns(pid_t process);

} // namespace paperline
