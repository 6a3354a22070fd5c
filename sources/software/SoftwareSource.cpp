// The software scanner's data source: an ordinary one over a worker.
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
