// The default source that a user chose, kept from one program run to the next.
#pragma once

#include "twain/records/StandardRecords.h"

#include <string>

namespace paperline::dsm {

// Manufacturer, product family and product name, a line each. Line breaks inside are blanks.
std::string nameLines(const twain::abi::Identity& identity);

// The lines remembered in the user's data folder; empty when there are none.
std::string readDefaultSource();
// False when the user has no data folder or it cannot be written.
[[nodiscard]] bool writeDefaultSource(const std::string& lines);

} // namespace paperline::dsm
