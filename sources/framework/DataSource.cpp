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

// Cuts the text to whole UTF-8 characters and fills the rest with zero bytes.
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
    uint16_t message; // the only one; MSG_NULL: `answer` distinguishes several
    States states;    // in which it is answered
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
    using enum State;
    using Source = DataSource;
    constexpr States always{loaded, transferring}, open4To6{open, transferReady};
    constexpr States ready{transferReady, transferReady}, sending{transferring, transferring};
    constexpr States page{transferReady, transferring};
    static constexpr std::array<Route, 16> routes{{
        {DG_CONTROL, DAT_ENTRYPOINT, MSG_SET, always, &Source::entryPointTriplet},
        {DG_CONTROL, DAT_CALLBACK, MSG_REGISTER_CALLBACK, always, &Source::callbackTriplet},
        {DG_CONTROL, DAT_CALLBACK2, MSG_REGISTER_CALLBACK, always, &Source::callbackTriplet},
        {DG_CONTROL, DAT_EVENT, MSG_PROCESSEVENT, {enabled, transferring}, &Source::eventTriplet},
        {DG_CONTROL, DAT_STATUS, MSG_GET, always, &Source::statusTriplet},
        {DG_CONTROL, DAT_STATUSUTF8, MSG_GET, always, &Source::statusUtf8Triplet},
        {DG_CONTROL, DAT_XFERGROUP, MSG_NULL, open4To6, &Source::transferGroupTriplet},
        {DG_CONTROL, DAT_PENDINGXFERS, MSG_NULL, always, &Source::pendingTransfersTriplet},
        {DG_CONTROL, DAT_CAPABILITY, MSG_NULL, {open, transferring}, &Source::capabilityTriplet},
        {DG_CONTROL, DAT_SETUPMEMXFER, MSG_GET, open4To6, &Source::setupMemoryTriplet},
        {DG_CONTROL, DAT_SETUPFILEXFER, MSG_NULL, open4To6, &Source::setupFileTriplet},
        {DG_IMAGE, DAT_IMAGEINFO, MSG_GET, page, &Source::imageInfoTriplet},
        {DG_IMAGE, DAT_IMAGELAYOUT, MSG_NULL, open4To6, &Source::imageLayoutTriplet},
        {DG_IMAGE, DAT_IMAGEMEMXFER, MSG_GET, page, &Source::memoryTransferTriplet},
        {DG_IMAGE, DAT_IMAGENATIVEXFER, MSG_GET, ready, &Source::nativeTransferTriplet},
        {DG_IMAGE, DAT_EXTIMAGEINFO, MSG_GET, sending, &Source::extendedInfoTriplet},
    }};
    if (triplet.dataGroup == DG_CONTROL && triplet.dataArgumentType == DAT_IDENTITY)
        return identityTriplet(origin, triplet.message, data);
    if (triplet.dataGroup == DG_CONTROL && triplet.dataArgumentType == DAT_USERINTERFACE)
        return userInterfaceTriplet(triplet.message, data);
    if (triplet.dataGroup == DG_IMAGE && triplet.dataArgumentType == DAT_IMAGEFILEXFER)
        return fileTransferTriplet(triplet.message);
    for (const Route& route : routes) {
        if (route.dataGroup != triplet.dataGroup ||
            route.dataArgumentType != triplet.dataArgumentType)
            continue;
        if (data == nullptr)
            return fail(TWCC_BADVALUE);
        if (route.message != MSG_NULL && route.message != triplet.message)
            return fail(TWCC_BADPROTOCOL);
        if (!stateIs(route.states.first, route.states.last))
            return fail(TWCC_SEQERROR);
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

// The language is read each time, because the user may change it while the source is open.
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
        identity->Id = id; // assigned by the manager
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
        // The application cannot ask for the text of a source that is not open.
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

uint16_t DataSource::entryPointTriplet(uint16_t, void* data) {
    const bool whole = manager_.setEntryPoint(*static_cast<const abi::EntryPoint*>(data));
    return whole ? TWRC_SUCCESS : fail(TWCC_BADVALUE);
}

uint16_t DataSource::callbackTriplet(uint16_t, void* data) {
    void* callback = nullptr; // both records begin with it
    std::memcpy(&callback, data, sizeof callback);
    manager_.setCallback(callback);
    return TWRC_SUCCESS;
}

uint16_t DataSource::eventTriplet(uint16_t, void* data) {
    auto& event = *static_cast<abi::Event*>(data);
    event.TWMessage = readyNotDelivered_ ? MSG_XFERREADY : MSG_NULL;
    return std::exchange(readyNotDelivered_, false) ? TWRC_DSEVENT : TWRC_NOTDSEVENT;
}

uint16_t DataSource::statusTriplet(uint16_t, void* data) {
    // The standard: reading the condition clears it.
    *static_cast<abi::Status*>(data) = {std::exchange(conditionCode_, TWCC_SUCCESS), 0};
    return TWRC_SUCCESS;
}

uint16_t DataSource::statusUtf8Triplet(uint16_t, void* data) {
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
