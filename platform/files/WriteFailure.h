// Why a file was not written, in words for messages and logs.
#pragma once

#include <string>

namespace paperline {

// The system's text for an errno, such as "No space left on device".
std::string writeFailureText(int errorNumber);

} // namespace paperline
