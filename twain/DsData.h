// One installed data source bundle.
#pragma once

#include <string>

namespace paperline {

struct DsData {
    std::string dsName;       // name of the bundle's folder entry
    std::string dsPath;       // folder + "/" + entry
    std::string Manufacturer; // of its Info.plist
    std::string ProductName;
};

} // namespace paperline
