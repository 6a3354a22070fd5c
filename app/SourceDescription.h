// The options of a data source.
#pragma once

#include <string>

namespace paperline {

// Writes one option per line to the descriptor: name, kind, value, unit, choices or range, and
// title, separated by tabs. A helper program asks the device. Returns the command's exit code.
int describeSource(const std::string& sourceBundle, int resultDescriptor);

} // namespace paperline
