// Looks for scanners and makes a data source bundle for each, in a helper program of its own.
#pragma once

#include <functional>
#include <string>

namespace paperline {

// Uses what earlier runs found and refreshes behind the user's back. Only when no run has finished
// a search yet does it wait, at most five seconds, after calling `aboutToWait`.
void discoverSources(const std::function<void()>& aboutToWait);

} // namespace paperline
