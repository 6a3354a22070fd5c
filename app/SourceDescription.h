// The options of a data source, as its worker program lists them.
#pragma once

#include <string>

namespace paperline {

// Writes one option a line to the descriptor: name, kind, value, unit, choices or range, title, tab
// separated. Returns the command's exit code.
int describeSource(const std::string& sourceBundle, int resultDescriptor);

} // namespace paperline
