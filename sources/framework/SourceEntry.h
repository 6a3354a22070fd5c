// The one function that a data source library exports. Every bundle's loader stub forwards its
// DS_Entry here with the path of its own bundle, so that one library serves many bundles.
#pragma once

#include "sources/framework/DataSource.h"
#include "sources/framework/SourceConfiguration.h"

#include <memory>

namespace paperline::sources {

// Defined once by each data source library: the data source of the bundle with this configuration.
std::unique_ptr<DataSource> makeDataSource(const SourceConfiguration& configuration);

} // namespace paperline::sources

extern "C" __attribute__((visibility("default"))) uint16_t
paperlineSourceEntry(const char* bundlePath,
                     twain::abi::Identity* origin,
                     uint32_t dataGroup,
                     uint16_t dataArgumentType,
                     uint16_t message,
                     void* data);
