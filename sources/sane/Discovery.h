// Discovery: one data source bundle for each device that SANE finds.
#pragma once

#include <string>

namespace paperline::sources {

// Brings the bundles in the folder in line with the devices that are there: new devices get a
// bundle, those of devices that are gone go. Prints "PRODUCT<tab>DEVICE" for each that stands
// afterwards to `output`. An exit status: 0 done, 1 the devices could not be listed (nothing is
// changed then) or a bundle not be written.
int runDiscovery(const std::string& bundleFolder, int output);

} // namespace paperline::sources
