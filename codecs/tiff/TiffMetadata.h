// Texts in a TIFF file that is already written.
#pragma once

#include <string>

namespace paperline {

// Sets the maker and the model of the first page. Everything else stays: the other tags, the other
// pages and the strips. Atomic: on failure (false) the file is as it was.
[[nodiscard]] bool
setTiffMakeAndModel(const std::string& path, const std::string& make, const std::string& model);

} // namespace paperline
