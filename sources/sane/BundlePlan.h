// Which bundle stands for which device. Names of products stay with their devices from one
// discovery to the next; nothing here looks at the disk.
#pragma once

#include "sources/sane/SaneScanner.h"

#include <set>
#include <string>
#include <vector>

namespace paperline::sources {

// TWAIN's product name has room for so many bytes.
inline constexpr size_t maximumProductBytes = 32;

// Vendor and model in one line of whole characters; a vendor that the model repeats is left out.
std::string productBaseName(const SaneDeviceEntry& device);
// The name with a number at its end, cut so that it still fits. 1 is the name itself.
std::string numberedProductName(const std::string& baseName, int number);
// "Noname frontend-tester.ds": no slash, no leading dot.
std::string bundleFolderName(const std::string& product);

// A bundle that an earlier discovery made.
struct KnownBundle {
    std::string folder; // name below the bundle folder
    std::string product;
    std::string device;
    bool operator==(const KnownBundle&) const = default;
};

struct BundlePlan {
    std::vector<KnownBundle> bundles; // to be there, in the order of the devices
    std::vector<KnownBundle> obsolete;
};

// A device keeps its bundle. One that is new takes over the bundle of a device of the same model
// that is gone (a scanner behind another port has another device name), or gets the first free
// name. `takenFolders` are names of entries that discovery did not make. Bundles of
// `silentBackends`, which could not say what they have, stay as they are.
BundlePlan planBundles(const std::vector<KnownBundle>& known,
                       const std::set<std::string>& takenFolders,
                       const std::vector<SaneDeviceEntry>& devices,
                       const std::set<std::string>& silentBackends);

// "net" of "net:host:test:0".
std::string backendOfDevice(const std::string& device);

} // namespace paperline::sources
