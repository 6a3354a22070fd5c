// Lines for the person who looks at the console: standard error.
#pragma once

#include <string_view>

namespace paperline {

void systemLog(std::string_view line); // a line feed is added

} // namespace paperline
