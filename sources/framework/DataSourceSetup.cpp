// What is set before a transfer: capabilities, layout, buffers, file.
#include "platform/places/StandardFolders.h"
#include "sources/framework/DataSource.h"
#include "sources/framework/FixedPoint.h"
#include "sources/framework/StatusCodes.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace paperline::sources {

using namespace twain;

namespace {

constexpr uint32_t smallestBuffer = 64 * 1024;
constexpr uint32_t preferredBuffer = 4 * 1024 * 1024;

std::string defaultFileName() {
    const std::string folder = userDataFolder();
    return folder.empty() ? std::string("TWAIN.TMP") : folder + "/TWAIN.TMP";
}

abi::SetupFileXfer fileSetup(const std::string& fileName) {
    abi::SetupFileXfer setup{};
    std::memcpy(
        setup.FileName, fileName.data(), std::min(fileName.size(), sizeof setup.FileName - 1));
    setup.Format = TWFF_TIFF;
    return setup;
}

bool sameLength(double a, double b) {
    return std::abs(a - b) < 0.01;
}

bool sameFrame(const PaperFrame& a, const PaperFrame& b) {
    return sameLength(a.left, b.left) && sameLength(a.top, b.top) && sameLength(a.right, b.right) &&
           sameLength(a.bottom, b.bottom);
}

} // namespace

uint16_t DataSource::capabilityTriplet(uint16_t message, void* data) {
    auto& capability = *static_cast<abi::Capability*>(data);
    const bool changes = message == MSG_SET || message == MSG_RESET || message == MSG_RESETALL;
    if (changes && state_ != State::open)
        return fail(TWCC_SEQERROR);
    if (message == MSG_RESETALL) {
        capabilities_.resetAll();
        return TWRC_SUCCESS;
    }
    if (capabilities_.operations(capability.Cap) == 0)
        return fail(TWCC_CAPUNSUPPORTED);
    switch (message) {
    case MSG_SET:
        return setCapability(capability);
    case MSG_RESET:
        if (const uint16_t code = capabilities_.reset(capability.Cap); code != TWCC_SUCCESS)
            return fail(code);
        return getCapability(MSG_GETCURRENT, capability);
    case MSG_GET:
    case MSG_GETCURRENT:
    case MSG_GETDEFAULT:
    case MSG_QUERYSUPPORT:
        return getCapability(message, capability);
    default:
        return fail(TWCC_BADPROTOCOL);
    }
}

uint16_t DataSource::getCapability(uint16_t message, abi::Capability& capability) {
    const auto value =
        message == MSG_QUERYSUPPORT
            ? CapabilityValue::oneValue(TWTY_INT32, capabilities_.operations(capability.Cap))
            : capabilities_.value(capability.Cap, message);
    if (!value)
        return fail(TWCC_CAPUNSUPPORTED);
    const abi::Handle container = makeContainer(manager_, *value);
    if (container == nullptr)
        return fail(TWCC_LOWMEMORY);
    capability.ConType = value->containerType;
    capability.hContainer = container;
    return TWRC_SUCCESS;
}

uint16_t DataSource::setCapability(const abi::Capability& capability) {
    if ((capabilities_.operations(capability.Cap) & TWQC_SET) == 0)
        return fail(TWCC_CAPBADOPERATION);
    const auto setting =
        settingFromContainer(manager_, capability, capabilities_.itemType(capability.Cap));
    if (!setting)
        return fail(TWCC_BADVALUE);
    const uint16_t code = capabilities_.set(capability.Cap, *setting);
    return code == TWCC_SUCCESS ? TWRC_SUCCESS : fail(code);
}

abi::ImageLayout DataSource::imageLayout() const {
    PaperFrame frame = options_.frame();
    if (state_ == State::transferReady && page_.horizontalDpi > 0 && page_.verticalDpi > 0) {
        frame.right = frame.left + page_.widthPixels / page_.horizontalDpi;
        frame.bottom = frame.top + page_.heightPixels / page_.verticalDpi;
    }
    auto length = [&](double inches) {
        return toFix32(lengthInUnits(inches, capabilities_.units()));
    };
    abi::ImageLayout layout{};
    layout.Frame = {
        length(frame.left), length(frame.top), length(frame.right), length(frame.bottom)};
    layout.DocumentNumber = 1;
    layout.PageNumber = static_cast<uint32_t>(pagesEnded_) + 1;
    layout.FrameNumber = 1;
    return layout;
}

uint16_t DataSource::setFrame(const PaperFrame& frame, abi::ImageLayout& layout) {
    if (frame.left < 0 || frame.top < 0 || frame.right <= frame.left || frame.bottom <= frame.top)
        return fail(TWCC_BADVALUE);
    if (const ScanStatus status = options_.setFrame(frame); status != ScanStatus::good)
        return fail(twainResult(status).conditionCode);
    layout = imageLayout();
    // The device may have rounded the area.
    return sameFrame(frame, options_.frame()) ? TWRC_SUCCESS : TWRC_CHECKSTATUS;
}

uint16_t DataSource::imageLayoutTriplet(uint16_t message, void* data) {
    auto& layout = *static_cast<abi::ImageLayout*>(data);
    const bool changes = message == MSG_SET || message == MSG_RESET;
    if (changes && state_ != State::open)
        return fail(TWCC_SEQERROR);
    auto inches = [&](abi::Fix32 length) {
        return inchesFromUnits(fromFix32(length), capabilities_.units());
    };
    switch (message) {
    case MSG_GET:
    case MSG_GETCURRENT:
    case MSG_GETDEFAULT:
        layout = imageLayout();
        return TWRC_SUCCESS;
    case MSG_SET:
        return setFrame({inches(layout.Frame.Left),
                         inches(layout.Frame.Top),
                         inches(layout.Frame.Right),
                         inches(layout.Frame.Bottom)},
                        layout);
    case MSG_RESET:
        return setFrame({0,
                         0,
                         options_.physicalInches(Axis::horizontal),
                         options_.physicalInches(Axis::vertical)},
                        layout);
    default:
        return fail(TWCC_BADPROTOCOL);
    }
}

uint16_t DataSource::setupMemoryTriplet(uint16_t, void* data) {
    auto& setup = *static_cast<abi::SetupMemXfer*>(data);
    setup = {smallestBuffer, TWON_DONTCARE32, preferredBuffer};
    if (const int64_t byteCount = pageByteCount(page_); byteCount > 0) {
        // At most a whole page: a larger buffer gains nothing.
        const auto row = static_cast<uint32_t>(page_.bytesPerRow());
        const auto page = static_cast<uint32_t>(std::min<int64_t>(byteCount, UINT32_MAX));
        setup = {row, page, std::clamp(preferredBuffer / row * row, row, page)};
    }
    return TWRC_SUCCESS;
}

uint16_t DataSource::setupFileTriplet(uint16_t message, void* data) {
    auto& setup = *static_cast<abi::SetupFileXfer*>(data);
    switch (message) {
    case MSG_GET:
        setup = fileSetup(fileName_.empty() ? defaultFileName() : fileName_);
        return TWRC_SUCCESS;
    case MSG_GETDEFAULT:
        setup = fileSetup(defaultFileName());
        return TWRC_SUCCESS;
    case MSG_SET: {
        const size_t length = strnlen(setup.FileName, sizeof setup.FileName);
        if (setup.Format != TWFF_TIFF || length == 0 || length == sizeof setup.FileName)
            return fail(TWCC_BADVALUE);
        fileName_.assign(setup.FileName, length);
        return TWRC_SUCCESS;
    }
    case MSG_RESET:
        fileName_.clear();
        setup = fileSetup(defaultFileName());
        return TWRC_SUCCESS;
    default:
        return fail(TWCC_BADPROTOCOL);
    }
}

} // namespace paperline::sources
