// Looks for scanners and makes a data source bundle for each, in a helper program of its own.
#pragma once

#include <functional>
#include <string>

namespace paperline {

// Uses what earlier runs found and refreshes behind the user's back. Only when no scanner is known
// does it wait, after calling `aboutToWait`: at most five seconds for the first search, about one
// when an earlier search found nothing.
void discoverSources(const std::function<void()>& aboutToWait);

} // namespace paperline
