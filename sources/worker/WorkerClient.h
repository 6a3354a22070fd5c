// The data source's half: starts the worker when the device is opened, monitors it, and passes its
// pages on. Needs only the C++ and C libraries.
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

// A worker without a sign of life for PAPERLINE_WORKER_TIMEOUT seconds (default 60) is killed with
// its process group: workerHung. One that ends by itself or sends an invalid message: workerDied.
// After either, open() starts a new one. When it fails in stop() all pages are delivered already,
// and the next call starts a new worker with the same settings.
class WorkerClient final : public PageFeed {
public:
    explicit WorkerClient(WorkerLaunch launch) : launch_(std::move(launch)) {}
    ~WorkerClient() override { close(); }

    [[nodiscard]] ScanStatus open() override;
    void close() override;
    // Between start and stop: those of before.
    std::vector<OptionDescriptor> options() override;
    [[nodiscard]] ScanStatus setOption(const std::string& name, const std::string& value) override;
    [[nodiscard]] ScanStatus start() override;
    [[nodiscard]] ScanStatus nextPage(PageFormat& format) override;
    std::span<const uint8_t> pixels() const override;
    void stop() override;
    std::string errorText() const override { return errorText_; }

    // From another thread: nextPage stops the batch and returns cancelled.
    void cancel() { cancelAsked_ = true; }

    // 0 when no worker runs.
    pid_t workerProcess() const { return process_.id(); }

private:
    using Milliseconds = std::chrono::milliseconds;

    // The worker's page memory, mapped here.
    struct Buffer {
        Descriptor memory;
        void* start = nullptr;
        size_t mappedBytes = 0;
        bool held = false; // its page waits for nextPage or is current
    };
    struct ReadyPage {
        uint32_t buffer = 0;
        PageFormat format;
    };
    // Of a wait: the time since the last sign of life, or the whole of it.
    enum class Limit { silence, duration };

    [[nodiscard]] ScanStatus openWorker();
    [[nodiscard]] ScanStatus greet();
    void replaceLostWorker();
    [[nodiscard]] ScanStatus requestOption(const std::string& name, const std::string& value);
    [[nodiscard]] ScanStatus request(const MessageWriter& message, Limit kind);
    ScanStatus awaitAnswer(MessageType type, Limit kind);
    ScanStatus receive(ReceivedMessage& message, Limit kind);
    ScanStatus takeEvent(ReceivedMessage& message);
    ScanStatus takePage(ReceivedMessage& message);
    bool mapPage(Buffer& buffer, int64_t bytes);
    ScanStatus fail(ScanStatus status, const std::string& text);
    ScanStatus failInvalid();
    void releaseCurrent();
    void forgetBatch();
    void killWorker();
    uint64_t progress() const;

    WorkerLaunch launch_;
    WorkerProcess process_;
    Milliseconds timeout_{0};
    const struct WorkerPulse* pulse_ = nullptr;
    std::array<Buffer, pageBufferCount> buffers_;
    std::deque<ReadyPage> ready_;
    ReadyPage current_;
    bool hasCurrent_ = false;
    bool batchRuns_ = false;                 // between start and stop
    bool batchHasEnded_ = false;             // reported by the worker
    ScanStatus batchEnd_ = ScanStatus::good; // how it ended
    std::string batchEndText_;
    bool lostInStop_ = false;
    std::vector<std::pair<std::string, std::string>> settings_; // since open, in order
    std::vector<OptionDescriptor> options_;
    std::string errorText_;
    std::atomic<bool> cancelAsked_{false};
};

} // namespace paperline::sources
