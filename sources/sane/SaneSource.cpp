// The data source of SANE devices, loaded by their bundles: the framework's state machine over a
// worker process. libsane itself never comes into the application.
#include "sources/framework/DataSource.h"
#include "sources/framework/SourceEntry.h"
#include "sources/worker/WorkerClient.h"

namespace paperline::sources {

std::unique_ptr<TripletHandler> makeDataSource(const SourceConfiguration& configuration) {
    return std::make_unique<DataSource>(
        configuration,
        std::make_unique<WorkerClient>(
            WorkerLaunch{configuration.worker, configuration.device, configuration.product}));
}

} // namespace paperline::sources
