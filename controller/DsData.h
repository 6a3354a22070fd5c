// One installed data source bundle.
#pragma once

#include <string>
#include <utility>

namespace paperline {

struct DsData {
    std::string dsName;       // name of the bundle's folder entry
    std::string dsPath;       // folder + "/" + entry
    std::string Manufacturer; // of its Info.plist
    std::string ProductName;

    static DsData initWithData(std::string name,
                               std::string path,
                               std::string manufacturer,
                               std::string productName) {
        return {std::move(name), std::move(path), std::move(manufacturer), std::move(productName)};
    }
    bool operator==(const DsData&) const = default;
};

} // namespace paperline
