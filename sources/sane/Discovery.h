// Makes a data source bundle for each device that SANE finds.
#pragma once

#include <string>

namespace paperline::sources {

// Adds bundles of new devices and removes those of devices that are gone, then prints
// "PRODUCT<tab>DEVICE" for each bundle to `output`. Gives an exit status: 1 when the devices cannot
// be listed (nothing is changed then) or a bundle cannot be written.
int runDiscovery(const std::string& bundleFolder, int output);

} // namespace paperline::sources
