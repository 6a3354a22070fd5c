// Whether another process is still at work.
#pragma once

#include <sys/types.h>

namespace paperline {

// False once it has ended, even while nobody has taken notice of its end: an orphan's adopter may
// do that seconds later, or never.
bool processRuns(pid_t process);

} // namespace paperline
