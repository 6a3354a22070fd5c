// A TWAIN data source over a page feed, in the standard interface of 64-bit Linux: states 3
// (loaded) to 7 (transferring). One per bundle; one application at a time.
//
// The first page is fetched inside MSG_ENABLEDS, which fails when there is none; each next one
// inside MSG_ENDXFER. When that fails the batch ends with a count of 0 and TWRC_CHECKSTATUS, or
// TWRC_CANCEL when the scan was cancelled at the device. Pages delivered before stay good.
#pragma once

#include "sources/framework/CapabilityTable.h"
#include "sources/framework/ManagerLink.h"
#include "sources/framework/PageFeed.h"
#include "sources/framework/SourceConfiguration.h"

#include <memory>
#include <string>

namespace paperline::sources {

struct Triplet {
    uint32_t dataGroup = 0;
    uint16_t dataArgumentType = 0;
    uint16_t message = 0;
    bool operator==(const Triplet&) const = default;
};

class DataSource {
public:
    DataSource(SourceConfiguration configuration, std::unique_ptr<PageFeed> feed);
    virtual ~DataSource();

    // Answers one triplet with a TWRC_ code. Called on the application's thread; may be entered
    // again from inside the notification that a page is ready.
    virtual uint16_t entry(twain::abi::Identity* origin, const Triplet& triplet, void* data);

protected:
    // Tells the application that a page is ready. False when it cannot be reached; DAT_EVENT tells
    // it then.
    virtual bool notifyTransferReady();
    // Sends the application a message through the manager; false when it did not arrive.
    bool sendNotification(uint16_t message) const;

    const DeviceOptions& deviceOptions() const { return options_; }
    const PageFormat& currentPage() const { return page_; }
    // Answers with this condition code and keeps it for DAT_STATUS.
    uint16_t fail(uint16_t conditionCode);

private:
    struct Route;

    enum class State { loaded = 3, open = 4, enabled = 5, transferReady = 6, transferring = 7 };
    struct States {
        State first, last;
    };
    bool stateIs(State first, State last) const { return state_ >= first && state_ <= last; }
    uint16_t fail(ScanStatus status);
    std::string failureText() const;

    // DataSource.cpp
    uint16_t identityTriplet(twain::abi::Identity* origin, uint16_t message, void* data);
    uint16_t openSource(twain::abi::Identity* origin, const twain::abi::Identity& asked);
    uint16_t closeSource();
    uint16_t entryPointTriplet(uint16_t message, void* data);
    uint16_t callbackTriplet(uint16_t message, void* data);
    uint16_t eventTriplet(uint16_t message, void* data);
    uint16_t statusTriplet(uint16_t message, void* data);
    uint16_t statusUtf8Triplet(uint16_t message, void* data);
    uint16_t transferGroupTriplet(uint16_t message, void* data);

    // DataSourceBatch.cpp
    uint16_t userInterfaceTriplet(uint16_t message, void* data);
    uint16_t enable();
    uint16_t pendingTransfersTriplet(uint16_t message, void* data);
    uint16_t endTransfer(twain::abi::PendingXfers& pending);
    ScanStatus fetchPage();
    void endBatch();
    uint16_t pendingCount() const;

    // DataSourceSetup.cpp
    uint16_t capabilityTriplet(uint16_t message, void* data);
    uint16_t getCapability(uint16_t message, twain::abi::Capability& capability);
    uint16_t setCapability(const twain::abi::Capability& capability);
    uint16_t imageLayoutTriplet(uint16_t message, void* data);
    uint16_t setFrame(const PaperFrame& frame, twain::abi::ImageLayout& layout);
    twain::abi::ImageLayout imageLayout() const;
    uint16_t setupMemoryTriplet(uint16_t message, void* data);
    uint16_t setupFileTriplet(uint16_t message, void* data);

    // DataSourceTransfer.cpp
    uint16_t imageInfoTriplet(uint16_t message, void* data);
    uint16_t memoryTransferTriplet(uint16_t message, void* data);
    uint16_t sendStrip(twain::abi::ImageMemXfer& transfer, uint8_t* buffer);
    std::span<const uint8_t> pagePixels() const;
    uint16_t nativeTransferTriplet(uint16_t message, void* data);
    uint16_t fileTransferTriplet(uint16_t message);
    uint16_t extendedInfoTriplet(uint16_t message, void* data);

    SourceConfiguration configuration_;
    std::unique_ptr<PageFeed> feed_;
    DeviceOptions options_;
    CapabilityTable capabilities_;
    ManagerLink manager_;

    State state_ = State::loaded;
    twain::abi::Identity identity_;
    twain::abi::Identity application_{};
    uint16_t conditionCode_ = twain::TWCC_SUCCESS;
    uint16_t failedCondition_ = twain::TWCC_SUCCESS; // the last one; DAT_STATUS leaves it
    std::string errorText_;                          // the source's own text, English
    bool readyNotDelivered_ = false;                 // DAT_EVENT tells it

    PageFormat page_;
    int32_t rowsSent_ = 0;
    bool pageSent_ = false; // as a whole
    int pagesEnded_ = 0;    // of this batch
    std::string fileName_;  // of file transfers; empty: the default one
};

} // namespace paperline::sources
