// A parallel loop.
#pragma once

#include <cstddef>
#include <functional>

namespace paperline {

unsigned processorCount(); // at least 1

// Calls work(part, worker) once for every part from 0 to parts - 1, on up to `workers` threads, and
// returns when all calls have. Parts start in ascending order. The calling thread is worker 0.
// Calls of one worker never overlap, so each may have a buffer of its own. `work` must not throw.
// If threads cannot be created, fewer do the work.
void parallelFor(size_t parts,
                 unsigned workers,
                 const std::function<void(size_t part, unsigned worker)>& work);

// The same for work that may fail: false as soon as a call returns false or throws std::bad_alloc;
// no further part is begun then.
[[nodiscard]] bool parallelForAll(size_t parts,
                                  unsigned workers,
                                  const std::function<bool(size_t part, unsigned worker)>& work);

} // namespace paperline
