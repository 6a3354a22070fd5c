// Changes maker and model in a TIFF file.
#pragma once

#include <string>

namespace paperline {

// Sets maker and model of the first page; its other tags, the other pages and all strips stay.
// Atomic: on failure (false) the file is unchanged.
[[nodiscard]] bool
setTiffMakeAndModel(const std::string& path, const std::string& make, const std::string& model);

} // namespace paperline
