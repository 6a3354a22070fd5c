// Work that falls into parts, done by several threads at once.
#pragma once

#include <cstddef>
#include <functional>

namespace paperline {

// Processors of this machine, at least 1.
unsigned processorCount();

// Calls work(part, worker) once for every part below `parts` and returns when all are done. Parts
// are begun in ascending order. Calls with the same `worker` (below `workers`, 0 is the calling
// thread) never overlap, so each worker may own a buffer. `work` must not throw. When threads
// cannot be had, fewer workers do it all.
void parallelFor(size_t parts,
                 unsigned workers,
                 const std::function<void(size_t part, unsigned worker)>& work);

// The same for work that may fail: false as soon as a call returns false or throws std::bad_alloc;
// no further part is begun then.
[[nodiscard]] bool parallelForAll(size_t parts,
                                  unsigned workers,
                                  const std::function<bool(size_t part, unsigned worker)>& work);

} // namespace paperline
