// The data source of every bundle that users install: the framework's over a worker process.
#include "sources/framework/SourceEntry.h"
#include "sources/worker/WorkerClient.h"

namespace paperline::sources {

std::unique_ptr<DataSource> makeDataSource(const SourceConfiguration& configuration) {
    return std::make_unique<DataSource>(
        configuration, std::make_unique<WorkerClient>(workerLaunch(configuration)));
}

} // namespace paperline::sources
