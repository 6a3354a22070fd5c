// The function that a data source library exports. The loader stub of each bundle forwards its
// DS_Entry here with its bundle's path, so that one library serves many bundles.
#pragma once

#include "sources/framework/DataSource.h"
#include "sources/framework/SourceConfiguration.h"

#include <memory>

namespace paperline::sources {

// Defined by each data source library.
std::unique_ptr<DataSource> makeDataSource(const SourceConfiguration& configuration);

} // namespace paperline::sources

extern "C" __attribute__((visibility("default"))) uint16_t
paperlineSourceEntry(const char* bundlePath,
                     twain::abi::Identity* origin,
                     uint32_t dataGroup,
                     uint16_t dataArgumentType,
                     uint16_t message,
                     void* data);
