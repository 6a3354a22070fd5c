#include "sources/framework/DataSource.h"

#include "sources/framework/SourceLanguage.h"
#include "sources/framework/StatusCodes.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <utility>

namespace paperline::sources {

namespace {

using namespace twain;

// Cut to whole UTF-8 characters; ends in a zero byte.
template <size_t size> void setText(char (&field)[size], std::string_view text) {
    size_t length = std::min(text.size(), size - 1);
    while (length < text.size() && length > 0 && (text[length] & 0xc0) == 0x80)
        --length;
    std::fill(std::begin(field), std::end(field), '\0');
    std::memcpy(field, text.data(), length);
}

abi::Identity identityOf(const SourceConfiguration& configuration) {
    abi::Identity identity{};
    identity.Version.MajorNum = 1;
    identity.Version.MinorNum = 0;
    identity.Version.Language = TWLG_USA;
    identity.Version.Country = TWCY_USA;
    setText(identity.Version.Info, "1.0");
    identity.ProtocolMajor = 2;
    identity.ProtocolMinor = 4;
    identity.SupportedGroups = DG_CONTROL | DG_IMAGE | DF_DS2;
    setText(identity.Manufacturer, configuration.manufacturer);
    setText(identity.ProductFamily, configuration.family);
    setText(identity.ProductName, configuration.product);
    return identity;
}

} // namespace

struct DataSource::Route {
    uint32_t dataGroup;
    uint16_t dataArgumentType;
    bool needsData;
    uint16_t (DataSource::*answer)(uint16_t message, void* data);
};

DataSource::DataSource(SourceConfiguration configuration, std::unique_ptr<PageFeed> feed)
    : configuration_(std::move(configuration)), feed_(std::move(feed)), options_(*feed_),
      capabilities_(options_), identity_(identityOf(configuration_)) {}

DataSource::~DataSource() {
    endBatch();
    if (state_ != State::loaded)
        feed_->close();
}

uint16_t DataSource::entry(abi::Identity* origin, const Triplet& triplet, void* data) {
    static constexpr std::array<Route, 17> routes{{
        {DG_CONTROL, DAT_ENTRYPOINT, true, &DataSource::entryPointTriplet},
        {DG_CONTROL, DAT_CALLBACK, true, &DataSource::callbackTriplet},
        {DG_CONTROL, DAT_CALLBACK2, true, &DataSource::callbackTriplet},
        {DG_CONTROL, DAT_EVENT, true, &DataSource::eventTriplet},
        {DG_CONTROL, DAT_STATUS, true, &DataSource::statusTriplet},
        {DG_CONTROL, DAT_STATUSUTF8, true, &DataSource::statusUtf8Triplet},
        {DG_CONTROL, DAT_XFERGROUP, true, &DataSource::transferGroupTriplet},
        {DG_CONTROL, DAT_USERINTERFACE, false, &DataSource::userInterfaceTriplet},
        {DG_CONTROL, DAT_PENDINGXFERS, true, &DataSource::pendingTransfersTriplet},
        {DG_CONTROL, DAT_CAPABILITY, true, &DataSource::capabilityTriplet},
        {DG_CONTROL, DAT_SETUPMEMXFER, true, &DataSource::setupMemoryTriplet},
        {DG_CONTROL, DAT_SETUPFILEXFER, true, &DataSource::setupFileTriplet},
        {DG_IMAGE, DAT_IMAGEINFO, true, &DataSource::imageInfoTriplet},
        {DG_IMAGE, DAT_IMAGELAYOUT, true, &DataSource::imageLayoutTriplet},
        {DG_IMAGE, DAT_IMAGEMEMXFER, true, &DataSource::memoryTransferTriplet},
        {DG_IMAGE, DAT_IMAGENATIVEXFER, true, &DataSource::nativeTransferTriplet},
        {DG_IMAGE, DAT_EXTIMAGEINFO, true, &DataSource::extendedInfoTriplet},
    }};
    if (triplet.dataGroup == DG_CONTROL && triplet.dataArgumentType == DAT_IDENTITY)
        return identityTriplet(origin, triplet.message, data);
    if (triplet.dataGroup == DG_IMAGE && triplet.dataArgumentType == DAT_IMAGEFILEXFER)
        return fileTransferTriplet(triplet.message, data);
    for (const Route& route : routes) {
        if (route.dataGroup != triplet.dataGroup ||
            route.dataArgumentType != triplet.dataArgumentType)
            continue;
        if (route.needsData && data == nullptr)
            return fail(TWCC_BADVALUE);
        return (this->*route.answer)(triplet.message, data);
    }
    return fail(TWCC_BADPROTOCOL);
}

uint16_t DataSource::fail(uint16_t conditionCode) {
    conditionCode_ = failedCondition_ = conditionCode;
    errorText_ = conditionText(conditionCode);
    return TWRC_FAILURE;
}

uint16_t DataSource::fail(ScanStatus status) {
    const TwainResult result = twainResult(status);
    conditionCode_ = failedCondition_ = result.conditionCode;
    errorText_ = feed_->errorText();
    if (errorText_.empty())
        errorText_ = conditionText(result.conditionCode);
    return result.returnCode;
}

// In the language that the application left in the bundle; asked for each time, because the person
// may change it while the source is open.
std::string DataSource::failureText() const {
    const int32_t language = languageOfBundle(configuration_.bundlePath);
    const char* localized = localizedConditionText(language, failedCondition_);
    return localized != nullptr ? localized : errorText_;
}

uint16_t DataSource::identityTriplet(abi::Identity* origin, uint16_t message, void* data) {
    auto* identity = static_cast<abi::Identity*>(data);
    switch (message) {
    case MSG_GET: {
        if (identity == nullptr)
            return fail(TWCC_BADVALUE);
        const uint32_t id = state_ == State::loaded ? identity->Id : identity_.Id;
        *identity = identity_;
        identity->Id = id; // the manager's number stays
        return TWRC_SUCCESS;
    }
    case MSG_OPENDS:
        if (origin == nullptr || identity == nullptr)
            return fail(TWCC_BADVALUE);
        return openSource(origin, *identity);
    case MSG_CLOSEDS:
        return closeSource();
    default:
        return fail(TWCC_BADPROTOCOL);
    }
}

uint16_t DataSource::openSource(abi::Identity* origin, const abi::Identity& asked) {
    if (state_ != State::loaded)
        return fail(origin->Id == application_.Id ? TWCC_SEQERROR : TWCC_MAXCONNECTIONS);
    if (const ScanStatus status = feed_->open(); status != ScanStatus::good) {
        const uint16_t returnCode = fail(status);
        // A source that is not open cannot be asked for its words afterwards.
        std::fprintf(stderr, "%s: %s\n", identity_.ProductName, errorText_.c_str());
        feed_->close();
        return returnCode;
    }
    application_ = *origin;
    identity_.Id = asked.Id;
    options_.refresh();
    capabilities_.deviceOpened();
    fileName_.clear();
    state_ = State::open;
    return TWRC_SUCCESS;
}

uint16_t DataSource::closeSource() {
    if (state_ != State::open)
        return fail(TWCC_SEQERROR);
    feed_->close();
    state_ = State::loaded;
    return TWRC_SUCCESS;
}

uint16_t DataSource::entryPointTriplet(uint16_t message, void* data) {
    if (message != MSG_SET)
        return fail(TWCC_BADPROTOCOL);
    if (!manager_.setEntryPoint(*static_cast<const abi::EntryPoint*>(data)))
        return fail(TWCC_BADVALUE);
    return TWRC_SUCCESS;
}

uint16_t DataSource::callbackTriplet(uint16_t message, void* data) {
    if (message != MSG_REGISTER_CALLBACK)
        return fail(TWCC_BADPROTOCOL);
    void* callback = nullptr; // both records begin with it
    std::memcpy(&callback, data, sizeof callback);
    manager_.setCallback(callback);
    return TWRC_SUCCESS;
}

uint16_t DataSource::eventTriplet(uint16_t message, void* data) {
    auto& event = *static_cast<abi::Event*>(data);
    if (message != MSG_PROCESSEVENT)
        return fail(TWCC_BADPROTOCOL);
    if (!stateIs(State::enabled, State::transferring))
        return fail(TWCC_SEQERROR);
    event.TWMessage = readyNotDelivered_ ? MSG_XFERREADY : MSG_NULL;
    return std::exchange(readyNotDelivered_, false) ? TWRC_DSEVENT : TWRC_NOTDSEVENT;
}

uint16_t DataSource::statusTriplet(uint16_t message, void* data) {
    if (message != MSG_GET)
        return fail(TWCC_BADPROTOCOL);
    // Reading the condition clears it, the standard says.
    *static_cast<abi::Status*>(data) = {std::exchange(conditionCode_, TWCC_SUCCESS), 0};
    return TWRC_SUCCESS;
}

uint16_t DataSource::statusUtf8Triplet(uint16_t message, void* data) {
    if (message != MSG_GET)
        return fail(TWCC_BADPROTOCOL);
    auto& status = *static_cast<abi::StatusUtf8*>(data);
    const std::string text = failureText();
    const auto size = static_cast<uint32_t>(text.size() + 1);
    status.Size = 0;
    status.UTF8string = manager_.allocate(size);
    const LockedHandle locked(manager_, status.UTF8string);
    if (locked.bytes() == nullptr)
        return fail(TWCC_LOWMEMORY);
    std::memcpy(locked.bytes(), text.c_str(), size);
    status.Size = size;
    return TWRC_SUCCESS;
}

uint16_t DataSource::transferGroupTriplet(uint16_t message, void* data) {
    if (!stateIs(State::open, State::transferReady))
        return fail(TWCC_SEQERROR);
    uint32_t group = 0;
    switch (message) {
    case MSG_GET:
        group = DG_IMAGE;
        std::memcpy(data, &group, sizeof group);
        return TWRC_SUCCESS;
    case MSG_SET:
        std::memcpy(&group, data, sizeof group);
        return group == DG_IMAGE ? TWRC_SUCCESS : fail(TWCC_BADVALUE);
    default:
        return fail(TWCC_BADPROTOCOL);
    }
}

bool DataSource::sendNotification(uint16_t message) const {
    return manager_.notify(identity_, application_, message);
}

bool DataSource::notifyTransferReady() {
    return sendNotification(MSG_XFERREADY);
}

} // namespace paperline::sources
