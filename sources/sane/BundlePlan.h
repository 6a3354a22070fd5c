// Assigns bundles to devices, so that a device keeps its product name from one discovery to the
// next. Nothing here accesses the disk.
#pragma once

#include "sources/sane/SaneScanner.h"

#include <set>
#include <string>
#include <vector>

namespace paperline::sources {

// The room in TWAIN's product name.
inline constexpr size_t maximumProductBytes = 32;

// Vendor and model, without line breaks, cut to whole characters; a vendor that the model begins
// with is left out.
std::string productBaseName(const SaneDeviceEntry& device);
// The name with a number at its end, cut to fit; for 1 the name itself.
std::string numberedProductName(const std::string& baseName, int number);
// "Noname frontend-tester.ds": no slash, no leading dot.
std::string bundleFolderName(const std::string& product);

// A bundle that an earlier discovery made.
struct KnownBundle {
    std::string folder; // its name
    std::string product;
    std::string device;
    bool operator==(const KnownBundle&) const = default;
};

struct BundlePlan {
    std::vector<KnownBundle> bundles; // wanted, in the order of the devices
    std::vector<KnownBundle> obsolete;
};

// A device keeps its bundle. A new one takes over the bundle of a device of the same model that is
// gone (on another port a scanner has another device name), or gets the first free name.
// `takenFolders` are entries that discovery did not make. The bundles of `failedBackends`, which
// could not list their devices, stay.
BundlePlan planBundles(const std::vector<KnownBundle>& known,
                       const std::set<std::string>& takenFolders,
                       const std::vector<SaneDeviceEntry>& devices,
                       const std::set<std::string>& failedBackends);

// "net" of "net:host:test:0".
std::string backendOfDevice(const std::string& device);

} // namespace paperline::sources
