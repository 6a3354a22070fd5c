// The software scanner's data source: an ordinary one over a worker, and the faults on top of it.
#include "sources/framework/SourceEntry.h"
#include "sources/software/FaultySource.h"
#include "sources/worker/WorkerClient.h"

namespace paperline::sources {

std::unique_ptr<TripletHandler> makeDataSource(const SourceConfiguration& configuration) {
    WorkerLaunch launch{configuration.worker, configuration.device, configuration.product};
    return std::make_unique<FaultySource>(configuration,
                                          std::make_unique<WorkerClient>(std::move(launch)));
}

} // namespace paperline::sources
