#include "sources/framework/CapabilityTable.h"

#include "sources/framework/FixedPoint.h"
#include "sources/framework/StatusCodes.h"

#include <algorithm>
#include <array>

namespace paperline::sources {

namespace {

using namespace twain;

enum class Shape { single, list, array, resolution };

struct Row {
    uint16_t capability;
    uint16_t itemType;
    Shape shape; // of MSG_GET's answer
    bool settable;
};

constexpr uint32_t readable = TWQC_GET | TWQC_GETCURRENT | TWQC_GETDEFAULT;

constexpr std::array<Row, 25> table{{
    {CAP_XFERCOUNT, TWTY_INT16, Shape::single, true},
    {CAP_SUPPORTEDCAPS, TWTY_UINT16, Shape::array, false},
    {CAP_UICONTROLLABLE, TWTY_BOOL, Shape::single, false},
    {CAP_DEVICEONLINE, TWTY_BOOL, Shape::single, false},
    {CAP_ENABLEDSUIONLY, TWTY_BOOL, Shape::single, false},
    {CAP_INDICATORS, TWTY_BOOL, Shape::list, true},
    {CAP_FEEDERENABLED, TWTY_BOOL, Shape::list, true},
    {CAP_FEEDERLOADED, TWTY_BOOL, Shape::single, false},
    {CAP_AUTOFEED, TWTY_BOOL, Shape::list, true},
    {CAP_PAPERDETECTABLE, TWTY_BOOL, Shape::single, false},
    {ICAP_COMPRESSION, TWTY_UINT16, Shape::list, true},
    {ICAP_PIXELTYPE, TWTY_UINT16, Shape::list, true},
    {ICAP_UNITS, TWTY_UINT16, Shape::list, true},
    {ICAP_XFERMECH, TWTY_UINT16, Shape::list, true},
    {ICAP_IMAGEFILEFORMAT, TWTY_UINT16, Shape::list, true},
    {ICAP_BITDEPTH, TWTY_UINT16, Shape::list, true},
    {ICAP_BITORDER, TWTY_UINT16, Shape::list, true},
    {ICAP_PIXELFLAVOR, TWTY_UINT16, Shape::list, true},
    {ICAP_PLANARCHUNKY, TWTY_UINT16, Shape::list, true},
    {ICAP_PHYSICALWIDTH, TWTY_FIX32, Shape::single, false},
    {ICAP_PHYSICALHEIGHT, TWTY_FIX32, Shape::single, false},
    {ICAP_XRESOLUTION, TWTY_FIX32, Shape::resolution, true},
    {ICAP_YRESOLUTION, TWTY_FIX32, Shape::resolution, true},
    {ICAP_XNATIVERESOLUTION, TWTY_FIX32, Shape::single, false},
    {ICAP_YNATIVERESOLUTION, TWTY_FIX32, Shape::single, false},
}};

const Row* rowOf(uint16_t capability) {
    const auto* found = std::find_if(
        table.begin(), table.end(), [&](const Row& row) { return row.capability == capability; });
    return found != table.end() ? found : nullptr;
}

Axis axisOf(uint16_t capability) {
    return capability == ICAP_XRESOLUTION || capability == ICAP_XNATIVERESOLUTION ||
                   capability == ICAP_PHYSICALWIDTH
               ? Axis::horizontal
               : Axis::vertical;
}

uint32_t bitDepth(int16_t pixelType) {
    return pixelType == TWPT_BW ? 1 : pixelType == TWPT_GRAY ? 8 : 24;
}

double largest(const ResolutionChoices& choices) {
    if (choices.hasRange)
        return choices.maximum;
    return choices.dpi.empty() ? 0 : *std::max_element(choices.dpi.begin(), choices.dpi.end());
}

} // namespace

void CapabilityTable::deviceOpened() {
    transferCount_ = -1;
    units_ = TWUN_INCHES;
    transferMechanism_ = TWSX_NATIVE;
    defaultPixelType_ = options_.pixelType();
    defaultFeeder_ = options_.usesFeeder();
    defaultDpi_[0] = options_.resolution(Axis::horizontal);
    defaultDpi_[1] = options_.resolution(Axis::vertical);
}

uint32_t CapabilityTable::operations(uint16_t capability) const {
    const Row* row = rowOf(capability);
    if (row == nullptr)
        return 0;
    return row->settable ? readable | TWQC_SET | TWQC_RESET : readable;
}

uint16_t CapabilityTable::itemType(uint16_t capability) const {
    const Row* row = rowOf(capability);
    return row != nullptr ? row->itemType : TWTY_UINT16;
}

uint32_t CapabilityTable::lengthItem(double inches) const {
    return fix32Item(lengthInUnits(inches, units_));
}

uint32_t CapabilityTable::resolutionItem(double dpi) const {
    return fix32Item(resolutionInUnits(dpi, units_));
}

uint32_t CapabilityTable::item(uint16_t capability) const {
    switch (capability) {
    case CAP_XFERCOUNT:
        return static_cast<uint32_t>(static_cast<int32_t>(transferCount_));
    case CAP_UICONTROLLABLE:
    case CAP_DEVICEONLINE:
    case CAP_AUTOFEED:
        return 1;
    case CAP_FEEDERENABLED:
        return options_.usesFeeder() ? 1 : 0;
    case CAP_FEEDERLOADED: // not known before a scan fails
        return options_.hasFeeder() ? 1 : 0;
    case ICAP_PIXELTYPE:
        return static_cast<uint32_t>(options_.pixelType());
    case ICAP_UNITS:
        return units_;
    case ICAP_XFERMECH:
        return transferMechanism_;
    case ICAP_BITDEPTH:
        return bitDepth(options_.pixelType());
    case ICAP_BITORDER:
        return TWBO_MSBFIRST;
    case ICAP_PHYSICALWIDTH:
    case ICAP_PHYSICALHEIGHT:
        return lengthItem(options_.physicalInches(axisOf(capability)));
    case ICAP_XRESOLUTION:
    case ICAP_YRESOLUTION:
        return resolutionItem(options_.resolution(axisOf(capability)));
    case ICAP_XNATIVERESOLUTION:
    case ICAP_YNATIVERESOLUTION:
        return resolutionItem(largest(options_.resolutions(axisOf(capability))));
    default: // always 0: no compression, chocolate, chunky, TIFF, no indicators
        return 0;
    }
}

uint32_t CapabilityTable::defaultItem(uint16_t capability) const {
    switch (capability) {
    case CAP_XFERCOUNT:
        return UINT32_MAX;
    case CAP_FEEDERENABLED:
        return defaultFeeder_ ? 1 : 0;
    case ICAP_PIXELTYPE:
        return static_cast<uint32_t>(defaultPixelType_);
    case ICAP_UNITS:
        return TWUN_INCHES;
    case ICAP_XFERMECH:
        return TWSX_NATIVE;
    case ICAP_XRESOLUTION:
    case ICAP_YRESOLUTION:
        return resolutionItem(defaultDpi_[axisOf(capability) == Axis::horizontal ? 0 : 1]);
    default:
        return item(capability);
    }
}

std::vector<uint32_t> CapabilityTable::choices(uint16_t capability) const {
    std::vector<uint32_t> items;
    switch (capability) {
    case CAP_SUPPORTEDCAPS:
        for (const Row& row : table)
            items.push_back(row.capability);
        break;
    case CAP_FEEDERENABLED:
        if (options_.hasFlatbed())
            items.push_back(0);
        if (options_.hasFeeder())
            items.push_back(1);
        break;
    case ICAP_PIXELTYPE:
        for (const int16_t type : options_.pixelTypes())
            items.push_back(static_cast<uint32_t>(type));
        break;
    case ICAP_UNITS:
        items = {TWUN_INCHES, TWUN_CENTIMETERS};
        break;
    case ICAP_XFERMECH:
        items = {TWSX_NATIVE, TWSX_FILE, TWSX_MEMORY};
        break;
    case ICAP_XRESOLUTION:
    case ICAP_YRESOLUTION:
        for (const double dpi : options_.resolutions(axisOf(capability)).dpi)
            items.push_back(resolutionItem(dpi));
        break;
    default:
        break;
    }
    if (items.empty())
        items.push_back(item(capability));
    return items;
}

CapabilityValue CapabilityTable::resolutionRange(uint16_t capability) const {
    const ResolutionChoices choices = options_.resolutions(axisOf(capability));
    CapabilityValue value;
    value.containerType = TWON_RANGE;
    value.itemType = TWTY_FIX32;
    value.minimum = resolutionItem(choices.minimum);
    value.maximum = resolutionItem(choices.maximum);
    value.step = resolutionItem(choices.step > 0 ? choices.step : 1);
    value.current = item(capability);
    value.defaultValue = defaultItem(capability);
    return value;
}

std::optional<CapabilityValue> CapabilityTable::value(uint16_t capability, uint16_t message) const {
    const Row* row = rowOf(capability);
    if (row == nullptr)
        return std::nullopt;
    if (row->shape != Shape::array && message != MSG_GET)
        return CapabilityValue::oneValue(
            row->itemType, message == MSG_GETDEFAULT ? defaultItem(capability) : item(capability));
    if (row->shape == Shape::single)
        return CapabilityValue::oneValue(row->itemType, item(capability));
    if (row->shape == Shape::resolution && options_.resolutions(axisOf(capability)).hasRange)
        return resolutionRange(capability);

    CapabilityValue list;
    list.containerType = row->shape == Shape::array ? TWON_ARRAY : TWON_ENUMERATION;
    list.itemType = row->itemType;
    list.items = choices(capability);
    auto indexOf = [&](uint32_t wanted) {
        const auto found = std::find(list.items.begin(), list.items.end(), wanted);
        return found != list.items.end() ? static_cast<uint32_t>(found - list.items.begin()) : 0;
    };
    list.currentIndex = indexOf(item(capability));
    list.defaultIndex = indexOf(defaultItem(capability));
    return list;
}

uint16_t CapabilityTable::setOnDevice(uint16_t capability, uint32_t item) {
    ScanStatus status = ScanStatus::good;
    switch (capability) {
    case ICAP_PIXELTYPE:
        status = options_.setPixelType(static_cast<int16_t>(item));
        break;
    case CAP_FEEDERENABLED:
        status = options_.setUsesFeeder(item != 0);
        break;
    default:
        status =
            options_.setResolution(axisOf(capability), dpiFromUnits(fix32FromItem(item), units_));
        break;
    }
    return status == ScanStatus::good ? TWCC_SUCCESS : twainResult(status).conditionCode;
}

uint16_t CapabilityTable::set(uint16_t capability, uint32_t item) {
    const Row* row = rowOf(capability);
    if (row == nullptr)
        return TWCC_CAPUNSUPPORTED;
    if (!row->settable)
        return TWCC_CAPBADOPERATION;
    if (row->shape == Shape::resolution)
        return setOnDevice(capability, item);
    if (capability == CAP_XFERCOUNT) {
        const auto count = static_cast<int32_t>(item);
        if (count != -1 && count <= 0)
            return TWCC_BADVALUE;
        transferCount_ = static_cast<int16_t>(count);
        return TWCC_SUCCESS;
    }
    const std::vector<uint32_t> allowed = choices(capability);
    if (std::find(allowed.begin(), allowed.end(), item) == allowed.end())
        return TWCC_BADVALUE;
    if (capability == ICAP_UNITS)
        units_ = static_cast<uint16_t>(item);
    else if (capability == ICAP_XFERMECH)
        transferMechanism_ = static_cast<uint16_t>(item);
    else if (capability == ICAP_PIXELTYPE || capability == CAP_FEEDERENABLED)
        return setOnDevice(capability, item);
    return TWCC_SUCCESS; // the others have a single value
}

uint16_t CapabilityTable::reset(uint16_t capability) {
    return set(capability, defaultItem(capability));
}

void CapabilityTable::resetAll() {
    units_ = TWUN_INCHES; // first, because resolutions are set in them
    for (const Row& row : table) {
        // A device that refuses one default keeps the others.
        if (row.settable && item(row.capability) != defaultItem(row.capability))
            static_cast<void>(reset(row.capability));
    }
}

} // namespace paperline::sources
