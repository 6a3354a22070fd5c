// Looks for scanners in a helper program, which makes a data source bundle for each.
#pragma once

#include <functional>
#include <string>

namespace paperline {

// When scanners are known, the search only refreshes them in the background. Otherwise it is waited
// for, after a call of `aboutToWait`: at most five seconds for the first search, about one second
// for later ones.
void discoverSources(const std::function<void()>& aboutToWait);

} // namespace paperline
