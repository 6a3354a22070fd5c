#include "tests/sources/faulty/FaultySource.h"

#include "sources/framework/OptionLines.h"
#include "tests/sources/faulty/FaultyRecords.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>

namespace paperline::sources {

using namespace twain;

namespace {

struct NamedTriplet {
    std::string_view name;
    Triplet triplet;
};

constexpr std::array<NamedTriplet, 13> namedTriplets{{
    {"open", {DG_CONTROL, DAT_IDENTITY, MSG_OPENDS}},
    {"close", {DG_CONTROL, DAT_IDENTITY, MSG_CLOSEDS}},
    {"enable", {DG_CONTROL, DAT_USERINTERFACE, MSG_ENABLEDS}},
    {"disable", {DG_CONTROL, DAT_USERINTERFACE, MSG_DISABLEDS}},
    {"info", {DG_IMAGE, DAT_IMAGEINFO, MSG_GET}},
    {"setup", {DG_CONTROL, DAT_SETUPMEMXFER, MSG_GET}},
    {"strip", {DG_IMAGE, DAT_IMAGEMEMXFER, MSG_GET}},
    {"native", {DG_IMAGE, DAT_IMAGENATIVEXFER, MSG_GET}},
    {"filesetup", {DG_CONTROL, DAT_SETUPFILEXFER, MSG_GETDEFAULT}},
    {"file", {DG_IMAGE, DAT_IMAGEFILEXFER, MSG_GET}},
    {"end", {DG_CONTROL, DAT_PENDINGXFERS, MSG_ENDXFER}},
    {"reset", {DG_CONTROL, DAT_PENDINGXFERS, MSG_RESET}},
    {"extinfo", {DG_IMAGE, DAT_EXTIMAGEINFO, MSG_GET}},
}};

std::string nameOf(const Triplet& triplet) {
    for (const NamedTriplet& named : namedTriplets)
        if (named.triplet == triplet)
            return std::string(named.name);
    return {};
}

uint16_t conditionOf(const Fault& fault) {
    return static_cast<uint16_t>(fault.value.value_or(TWCC_OPERATIONERROR));
}

// For ever, unless told for how many seconds.
void hang(const Fault& fault) {
    if (fault.value)
        std::this_thread::sleep_for(std::chrono::seconds(*fault.value));
    else
        for (;;)
            std::this_thread::sleep_for(std::chrono::hours(1));
}

} // namespace

FaultySource::FaultySource(const SourceConfiguration& configuration, std::unique_ptr<PageFeed> feed)
    : DataSource(configuration, std::move(feed)), product_(configuration.product) {}

FaultySource::~FaultySource() {
    endThread();
}

// The last setting counts, as with the device itself; one with an unknown fault is refused by the
// device when it is opened.
void FaultySource::readFaults() {
    std::string text;
    for (const auto& settings : {storedOptions(product_), scanOptions()})
        for (const OptionSetting& setting : settings)
            if (setting.name == "fault")
                text = setting.value;
    faults_ = FaultList::parse(text).value_or(FaultList{});
}

int FaultySource::batchPages() const {
    int count = 1;
    for (const OptionDescriptor& option : deviceOptions().all())
        if (option.name == "count")
            std::from_chars(option.value.data(), option.value.data() + option.value.size(), count);
    return count;
}

const Fault* FaultySource::find(std::string_view name) const {
    return faults_.find(name, std::max(page_, 1), batchPages());
}

uint16_t FaultySource::entry(abi::Identity* origin, const Triplet& triplet, void* data) {
    if (triplet == Triplet{DG_CONTROL, DAT_IDENTITY, MSG_OPENDS}) {
        readFaults();
        page_ = 0;
        const Fault* vanish = faults_.find("vanish");
        if (vanish != nullptr && timesOpened_ >= vanish->value.value_or(1))
            return fail(TWCC_NODS);
    }
    if (triplet == Triplet{DG_CONTROL, DAT_IDENTITY, MSG_CLOSEDS})
        endThread();
    if (const auto instead = faultInstead(triplet, data))
        return *instead;
    const uint16_t returnCode = regularEntry(origin, triplet, data);
    follow(triplet, returnCode, data);
    // The page's last strip does not say that it is the last.
    return returnCode == TWRC_XFERDONE && pageWhole_ && find("strip-endless") != nullptr
               ? TWRC_SUCCESS
               : returnCode;
}

std::optional<uint16_t> FaultySource::faultInstead(const Triplet& triplet, void* data) {
    const std::string name = nameOf(triplet);
    if (name.empty())
        return std::nullopt;
    if (const Fault* fault = find(name + "-hang"))
        hang(*fault);
    if (const Fault* fault = find(name + "-fail"))
        return fail(conditionOf(*fault));
    if (find(name + "-cancel") != nullptr)
        return TWRC_CANCEL;
    return name == "strip" && data != nullptr ? stripInstead(data) : std::nullopt;
}

// Strips that the page does not have.
std::optional<uint16_t> FaultySource::stripInstead(void* data) {
    if (page_ == 0)
        return std::nullopt;
    if (find("strip-empty") != nullptr) {
        writeEmptyStrip(data, currentPage());
        return TWRC_SUCCESS;
    }
    const Fault* broken = find("strip-break");
    if (broken != nullptr && stripsOfPage_ > 0)
        return fail(conditionOf(*broken));
    const Fault* endless = find("strip-endless");
    if (endless == nullptr || !pageWhole_)
        return std::nullopt;
    ++stripsOfPage_;
    writeStripBehindPage(data, currentPage(), stripsOfPage_);
    const bool last = endless->value && stripsOfPage_ >= *endless->value;
    return last ? TWRC_XFERDONE : TWRC_SUCCESS;
}

uint16_t FaultySource::regularEntry(abi::Identity* origin, const Triplet& triplet, void* data) {
    const bool strip = triplet == Triplet{DG_IMAGE, DAT_IMAGEMEMXFER, MSG_GET};
    if (strip && data != nullptr && find("strip-small") != nullptr)
        return smallStrip(origin, triplet, data);
    return DataSource::entry(origin, triplet, data);
}

// The source is told of a smaller buffer than the application has.
uint16_t FaultySource::smallStrip(abi::Identity* origin, const Triplet& triplet, void* data) {
    const int64_t rows = std::max<int64_t>(find("strip-small")->value.value_or(1), 1);
    const uint32_t length = limitStripBuffer(data, currentPage(), rows);
    const uint16_t returnCode = DataSource::entry(origin, triplet, data);
    restoreStripBuffer(data, length);
    return returnCode;
}

void FaultySource::follow(const Triplet& triplet, uint16_t returnCode, void* data) {
    const std::string name = nameOf(triplet);
    const bool done = returnCode == TWRC_SUCCESS || returnCode == TWRC_XFERDONE;
    if (name == "open" && done) {
        timesOpened_ = faults_.find("vanish") != nullptr ? timesOpened_ + 1 : 0;
    } else if (name == "info" && done) {
        distortImageInfo(data);
    } else if (name == "strip" && done) {
        distortStrip(data);
        pageWhole_ = returnCode == TWRC_XFERDONE;
        stripsOfPage_ = pageWhole_ ? 0 : stripsOfPage_ + 1;
    } else if (name == "end") {
        if (const Fault* fault = find("end-count"); fault != nullptr && data != nullptr)
            writePendingCount(data, fault->value.value_or(7));
        ++page_;
        stripsOfPage_ = 0;
        pageWhole_ = false;
    }
}

void FaultySource::distortImageInfo(void* data) const {
    for (const auto& [name, write] : imageInfoDistortions())
        if (const Fault* fault = find(name))
            write(data, fault->value.value_or(0));
}

void FaultySource::distortStrip(void* data) const {
    for (const auto& [name, write] : stripDistortions())
        if (const Fault* fault = find(name))
            write(data, currentPage(), fault->value);
}

bool FaultySource::notifyTransferReady() {
    page_ = 1;
    stripsOfPage_ = 0;
    pageWhole_ = false;
    if (faults_.find("callback-never") != nullptr)
        return true;
    if (faults_.find("callback-close") != nullptr)
        return sendNotification(MSG_CLOSEDSREQ);
    if (const Fault* late = faults_.find("callback-late")) {
        notifyFromThread(late->value.value_or(500));
        return true;
    }
    if (faults_.find("callback-thread") != nullptr) {
        notifyFromThread(0);
        return true;
    }
    const bool told = sendNotification(MSG_XFERREADY);
    if (faults_.find("callback-twice") != nullptr)
        return sendNotification(MSG_XFERREADY) && told;
    return told;
}

void FaultySource::notifyFromThread(int64_t milliseconds) {
    endThread();
    threadShallEnd_ = false;
    thread_ = std::thread([this, milliseconds] {
        std::unique_lock lock(mutex_);
        const auto ended = [this] { return threadShallEnd_; };
        if (ending_.wait_for(lock, std::chrono::milliseconds(milliseconds), ended))
            return;
        lock.unlock();
        // There is no other way for the application to hear of the page.
        static_cast<void>(sendNotification(MSG_XFERREADY));
    });
}

void FaultySource::endThread() {
    if (!thread_.joinable())
        return;
    {
        const std::lock_guard lock(mutex_);
        threadShallEnd_ = true;
    }
    ending_.notify_all();
    thread_.join();
}

} // namespace paperline::sources
