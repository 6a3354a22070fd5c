// The data source of all our bundles: the framework's, with a worker process as its page feed.
#include "sources/framework/SourceEntry.h"
#include "sources/worker/WorkerClient.h"

namespace paperline::sources {

std::unique_ptr<DataSource> makeDataSource(const SourceConfiguration& configuration) {
    return std::make_unique<DataSource>(
        configuration, std::make_unique<WorkerClient>(workerLaunch(configuration)));
}

} // namespace paperline::sources
