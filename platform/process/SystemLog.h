// Messages on standard error.
#pragma once

#include <string_view>

namespace paperline {

void systemLog(std::string_view line); // adds the line feed

} // namespace paperline
