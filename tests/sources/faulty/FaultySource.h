// A data source that misbehaves as the option `fault` says.
#pragma once

#include "sources/framework/DataSource.h"
#include "tests/sources/faulty/Fault.h"

#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace paperline::sources {

class FaultySource : public DataSource {
public:
    FaultySource(const SourceConfiguration& configuration, std::unique_ptr<PageFeed> feed);
    ~FaultySource() override;

    uint16_t entry(twain::abi::Identity* origin, const Triplet& triplet, void* data) override;

protected:
    bool notifyTransferReady() override;

private:
    const Fault* find(std::string_view name) const;
    void readFaults();
    int batchPages() const;
    std::optional<uint16_t> faultInstead(const Triplet& triplet, void* data);
    std::optional<uint16_t> stripInstead(void* data);
    uint16_t regularEntry(twain::abi::Identity* origin, const Triplet& triplet, void* data);
    uint16_t smallStrip(twain::abi::Identity* origin, const Triplet& triplet, void* data);
    void distortImageInfo(void* data) const;
    void distortStrip(void* data) const;
    void follow(const Triplet& triplet, uint16_t returnCode, void* data);
    void notifyFromThread(int64_t milliseconds);
    void endThread();

    std::string product_;
    FaultList faults_;
    int page_ = 0; // of the batch, from 1
    int stripsOfPage_ = 0;
    bool pageWhole_ = false;
    int64_t timesOpened_ = 0; // since it was told to vanish

    std::thread thread_;
    std::mutex mutex_;
    std::condition_variable ending_;
    bool threadShallEnd_ = false;
};

} // namespace paperline::sources
