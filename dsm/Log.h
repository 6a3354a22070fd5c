// The manager's log: why a source was left out.
#pragma once

#include <string>

namespace paperline::dsm {

// One line to standard error, or at the end of the file that PAPERLINE_DSM_LOG names. Control
// characters of a hostile file name are replaced.
void logLine(const std::string& text);

} // namespace paperline::dsm
