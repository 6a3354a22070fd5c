// The library of the faulty scanner's bundle.
#include "sources/framework/SourceEntry.h"
#include "sources/worker/WorkerClient.h"
#include "tests/sources/faulty/FaultySource.h"

namespace paperline::sources {

std::unique_ptr<TripletHandler> makeDataSource(const SourceConfiguration& configuration) {
    WorkerLaunch launch{configuration.worker, configuration.device, configuration.product};
    return std::make_unique<FaultySource>(configuration,
                                          std::make_unique<WorkerClient>(std::move(launch)));
}

} // namespace paperline::sources
