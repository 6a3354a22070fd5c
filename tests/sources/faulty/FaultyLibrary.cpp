// The library of the faulty scanner's bundle.
#include "sources/framework/SourceEntry.h"
#include "sources/worker/WorkerClient.h"
#include "tests/sources/faulty/FaultySource.h"

namespace paperline::sources {

std::unique_ptr<DataSource> makeDataSource(const SourceConfiguration& configuration) {
    return std::make_unique<FaultySource>(
        configuration, std::make_unique<WorkerClient>(workerLaunch(configuration)));
}

} // namespace paperline::sources
