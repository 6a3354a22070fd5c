#include "sources/sane/Discovery.h"

#include "sources/sane/DeviceListing.h"
#include "sources/sane/SourceBundles.h"

#include <algorithm>
#include <cstdio>

#include <unistd.h>

namespace paperline::sources {

namespace {

// Device names are written to a file line by line.
bool isSafeName(const SaneDeviceEntry& device) {
    return !device.name.empty() &&
           std::none_of(device.name.begin(), device.name.end(), [](char character) {
               return static_cast<unsigned char>(character) < ' ';
           });
}

} // namespace

int runDiscovery(const std::string& bundleFolder, int output) {
    const BundleParts parts = partsBesideThisProgram();
    std::optional<DeviceListing> listing = listDevicesApart(parts.worker);
    if (!listing) {
        std::fputs("The scanners could not be listed.\n", stderr);
        return 1;
    }
    for (const std::string& backend : listing->failedBackends)
        std::fprintf(
            stderr, "The driver \"%s\" failed while it listed its scanners.\n", backend.c_str());
    std::erase_if(listing->devices,
                  [](const SaneDeviceEntry& device) { return !isSafeName(device); });
    SourceBundles bundles;
    if (!bundles.open(bundleFolder)) {
        std::fprintf(stderr, "%s cannot be written.\n", bundleFolder.c_str());
        return 1;
    }
    const BundlePlan plan = planBundles(
        bundles.known(), bundles.otherEntries(), listing->devices, listing->failedBackends);
    bool complete = true;
    for (const KnownBundle& bundle : plan.bundles) {
        if (!bundles.write(bundle, parts)) {
            std::fprintf(
                stderr, "The bundle of \"%s\" cannot be written.\n", bundle.product.c_str());
            complete = false;
            continue;
        }
        dprintf(output, "%s\t%s\n", bundle.product.c_str(), bundle.device.c_str());
    }
    for (const KnownBundle& bundle : plan.obsolete)
        complete = bundles.remove(bundle) && complete;
    return bundles.publish() && complete ? 0 : 1;
}

} // namespace paperline::sources
