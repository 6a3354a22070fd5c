// The data source's half: starts the worker when the device is opened, watches over it, and hands
// its pages on. Needs nothing but the C++ and C libraries.
#pragma once

#include "sources/framework/PageFeed.h"
#include "sources/framework/SourceConfiguration.h"
#include "sources/worker/WorkerProcess.h"

#include <array>
#include <atomic>
#include <chrono>
#include <deque>
#include <utility>
#include <vector>

namespace paperline::sources {

struct WorkerLaunch {
    std::string program; // absolute path of the worker
    std::string device;
    std::string product; // whose stored options apply
};
inline WorkerLaunch workerLaunch(const SourceConfiguration& source) {
    return {source.worker, source.device, source.product};
}

// Every wait ends when the worker shows no sign of life for PAPERLINE_WORKER_TIMEOUT seconds (60
// when not set): it is killed with its process group and workerHung reported. One that ends by
// itself, or sends what no worker sends, is workerDied. After either, open() starts a fresh one. A
// worker that is lost in stop() has given all its pages; the next call starts another, set alike.
class WorkerClient final : public PageFeed {
public:
    explicit WorkerClient(WorkerLaunch launch) : launch_(std::move(launch)) {}
    ~WorkerClient() override { close(); }

    [[nodiscard]] ScanStatus open() override;
    void close() override;
    // Between start and stop: as they were before.
    std::vector<OptionDescriptor> options() override;
    [[nodiscard]] ScanStatus setOption(const std::string& name, const std::string& value) override;
    [[nodiscard]] ScanStatus start() override;
    [[nodiscard]] ScanStatus nextPage(PageFormat& format) override;
    std::span<const uint8_t> pixels() const override;
    void stop() override;
    std::string errorText() const override { return errorText_; }

    // Makes a nextPage that waits in another thread stop the batch and return cancelled.
    void cancel() { cancelAsked_ = true; }

    // The worker's process, 0 when none runs.
    pid_t workerProcess() const { return process_.id(); }

private:
    using Milliseconds = std::chrono::milliseconds;

    // A worker's page memory as mapped here.
    struct Buffer {
        Descriptor memory;
        void* start = nullptr;
        size_t mappedBytes = 0;
        bool held = false; // waits for nextPage, or is the current page
    };
    struct ReadyPage {
        uint32_t buffer = 0;
        PageFormat format;
    };
    enum class Patience { whileAlive, atMost };

    [[nodiscard]] ScanStatus openWorker();
    [[nodiscard]] ScanStatus greet();
    void replaceLostWorker();
    [[nodiscard]] ScanStatus requestOption(const std::string& name, const std::string& value);
    [[nodiscard]] ScanStatus request(const MessageWriter& message, Patience kind);
    ScanStatus awaitAnswer(MessageType type, Patience kind);
    ScanStatus receive(ReceivedMessage& message, Patience kind);
    ScanStatus takeEvent(ReceivedMessage& message);
    ScanStatus takePage(ReceivedMessage& message);
    bool mapPage(Buffer& buffer, int64_t bytes);
    ScanStatus fail(ScanStatus status, const std::string& text);
    ScanStatus failNonsense();
    void releaseCurrent();
    void forgetBatch();
    void letGoOfWorker();
    uint64_t progress() const;

    WorkerLaunch launch_;
    WorkerProcess process_;
    Milliseconds timeout_{0};
    const struct WorkerPulse* pulse_ = nullptr;
    std::array<Buffer, pageBufferCount> buffers_;
    std::deque<ReadyPage> ready_;
    ReadyPage current_;
    bool hasCurrent_ = false;
    bool batchRuns_ = false;                 // from start on, until stop
    bool batchHasEnded_ = false;             // the worker said so
    ScanStatus batchEnd_ = ScanStatus::good; // how, when it has ended
    std::string batchEndText_;
    bool lostInStop_ = false;
    std::vector<std::pair<std::string, std::string>> settings_; // made since open, in order
    std::vector<OptionDescriptor> options_;
    std::string errorText_;
    std::atomic<bool> cancelAsked_{false};
};

} // namespace paperline::sources
