#include "sources/sane/LibsaneScanner.h"

#include "sources/sane/SaneValues.h"
#include "sources/sane/StatusText.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <limits>

#include <dlfcn.h>
#include <poll.h>
#include <pthread.h>
#include <sane/sane.h>

// Overrides the C library's function for the drivers that this program loads. They make their
// reader threads cancellable at any instruction and then join them: one that is cancelled inside
// the allocator never releases its lock. With deferred cancellation threads end when they wait or
// write.
extern "C" __attribute__((visibility("default"))) int pthread_setcanceltype(int, int* oldType) {
    static const auto systems =
        reinterpret_cast<int (*)(int, int*)>(dlsym(RTLD_NEXT, "pthread_setcanceltype"));
    return systems(PTHREAD_CANCEL_DEFERRED, oldType);
}

namespace paperline::sources {

namespace {

static_assert(static_cast<int>(SaneStatus::eof) == SANE_STATUS_EOF);
static_assert(static_cast<int>(SaneStatus::accessDenied) == SANE_STATUS_ACCESS_DENIED);

SaneStatus saneStatus(SANE_Status status) {
    return static_cast<SaneStatus>(static_cast<int>(status));
}

// sane_init and sane_exit. One at a time: for the worker's device, or for the listing.
class Session {
public:
    Session() : initialised_(sane_init(nullptr, nullptr) == SANE_STATUS_GOOD) {}
    ~Session() {
        if (initialised_)
            sane_exit();
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    bool isInitialised() const { return initialised_; }

private:
    bool initialised_;
};

constexpr size_t longestShownList = 64;

bool isWordType(SANE_Value_Type type) {
    return type == SANE_TYPE_BOOL || type == SANE_TYPE_INT || type == SANE_TYPE_FIXED;
}

size_t wordCount(const SANE_Option_Descriptor& option) {
    return option.size <= 0 ? 0 : static_cast<size_t>(option.size) / sizeof(SANE_Word);
}

OptionKind optionKind(SANE_Value_Type type) {
    constexpr std::array kinds{OptionKind::boolean,
                               OptionKind::integer,
                               OptionKind::fixed,
                               OptionKind::text,
                               OptionKind::button};
    static_assert(SANE_TYPE_BUTTON == 4);
    return type >= SANE_TYPE_BOOL && type <= SANE_TYPE_BUTTON ? kinds[type] : OptionKind::text;
}

const char* unitName(SANE_Unit unit) {
    constexpr std::array names{"", "px", "bit", "mm", "dpi", "%", "us"};
    static_assert(SANE_UNIT_MICROSECOND == 6);
    return unit >= SANE_UNIT_NONE && unit <= SANE_UNIT_MICROSECOND ? names[unit] : "";
}

void describeConstraint(const SANE_Option_Descriptor& option, OptionDescriptor& result) {
    const bool isFixed = option.type == SANE_TYPE_FIXED;
    const double scale = isFixed ? saneFixedScale : 1;
    switch (option.constraint_type) {
    case SANE_CONSTRAINT_RANGE:
        if (option.constraint.range == nullptr)
            return;
        result.hasRange = true;
        result.minimum = option.constraint.range->min / scale;
        result.maximum = option.constraint.range->max / scale;
        result.step = option.constraint.range->quant / scale;
        return;
    case SANE_CONSTRAINT_WORD_LIST:
        for (SANE_Int i = 1;
             option.constraint.word_list != nullptr && i <= option.constraint.word_list[0];
             ++i)
            result.choices.push_back(saneWordText(option.constraint.word_list[i], isFixed));
        return;
    case SANE_CONSTRAINT_STRING_LIST:
        for (const SANE_String_Const* text = option.constraint.string_list;
             text != nullptr && *text != nullptr;
             ++text)
            result.choices.push_back(utf8FromDriver(*text));
        return;
    default:
        return;
    }
}

class LibsaneScanner final : public SaneScanner {
public:
    ~LibsaneScanner() override {
        if (handle_ != nullptr)
            sane_close(handle_);
    }

    ScanStatus open(const std::string& device) override;
    std::vector<OptionDescriptor> options() override;
    ScanStatus setOption(const std::string& name, const std::string& value) override;
    ScanStatus start() override;
    std::optional<SaneParameters> parameters() override;
    SaneRead read(std::span<uint8_t> room) override;
    void waitForData() override;
    void cancel() override;
    std::string errorText() const override { return errorText_; }

private:
    ScanStatus outcome(SANE_Status status);
    ScanStatus refuse(const std::string& text);
    struct NumberedOption {
        SANE_Int index;
        const SANE_Option_Descriptor* descriptor;
    };
    std::vector<NumberedOption> namedOptions() const;
    std::string valueText(SANE_Int index, const SANE_Option_Descriptor& option) const;
    ScanStatus
    setWords(SANE_Int index, const SANE_Option_Descriptor& option, const std::string& value);
    std::optional<SANE_Word> allowedWord(const SANE_Option_Descriptor& option,
                                         const std::string& text);
    ScanStatus
    setString(SANE_Int index, const SANE_Option_Descriptor& option, const std::string& value);

    Session session_;
    SANE_Handle handle_ = nullptr;
    std::string errorText_;
};

ScanStatus LibsaneScanner::outcome(SANE_Status status) {
    errorText_ = statusText(saneStatus(status));
    return scanStatus(saneStatus(status));
}

ScanStatus LibsaneScanner::refuse(const std::string& text) {
    errorText_ = text;
    return ScanStatus::invalid;
}

ScanStatus LibsaneScanner::open(const std::string& device) {
    if (!session_.isInitialised())
        return outcome(SANE_STATUS_IO_ERROR);
    const SANE_Status status = sane_open(device.c_str(), &handle_);
    if (status == SANE_STATUS_GOOD && handle_ != nullptr)
        return ScanStatus::good;
    handle_ = nullptr;
    if (status != SANE_STATUS_INVAL && status != SANE_STATUS_GOOD)
        return outcome(status);
    errorText_ = "There is no scanner \"" + device + "\".";
    return ScanStatus::noSuchDevice;
}

std::vector<LibsaneScanner::NumberedOption> LibsaneScanner::namedOptions() const {
    std::vector<NumberedOption> result;
    SANE_Int count = 0; // the value of option 0
    if (handle_ == nullptr ||
        sane_control_option(handle_, 0, SANE_ACTION_GET_VALUE, &count, nullptr) != SANE_STATUS_GOOD)
        return result;
    for (SANE_Int i = 1; i < std::min(count, 10000); ++i) {
        const SANE_Option_Descriptor* option = sane_get_option_descriptor(handle_, i);
        if (option != nullptr && option->type != SANE_TYPE_GROUP && option->name != nullptr &&
            option->name[0] != '\0')
            result.push_back({i, option});
    }
    return result;
}

std::vector<OptionDescriptor> LibsaneScanner::options() {
    std::vector<OptionDescriptor> result;
    for (const auto& [index, option] : namedOptions()) {
        OptionDescriptor& entry = result.emplace_back();
        entry.name = option->name;
        entry.title = utf8FromDriver(option->title);
        entry.kind = optionKind(option->type);
        entry.unit = unitName(option->unit);
        entry.active = SANE_OPTION_IS_ACTIVE(option->cap);
        entry.settable = SANE_OPTION_IS_SETTABLE(option->cap);
        describeConstraint(*option, entry);
        entry.value = valueText(index, *option);
    }
    return result;
}

// Empty for options that cannot be read, and for tables of thousands of values.
std::string LibsaneScanner::valueText(SANE_Int index, const SANE_Option_Descriptor& option) const {
    const bool readable = SANE_OPTION_IS_ACTIVE(option.cap) &&
                          (option.cap & SANE_CAP_SOFT_DETECT) != 0 &&
                          (isWordType(option.type) || option.type == SANE_TYPE_STRING);
    if (!readable || option.size <= 0 ||
        (option.type != SANE_TYPE_STRING && wordCount(option) > longestShownList))
        return {};
    // Words, for their alignment.
    std::vector<SANE_Word> value(static_cast<size_t>(option.size) / sizeof(SANE_Word) + 1, 0);
    const SANE_Status status =
        sane_control_option(handle_, index, SANE_ACTION_GET_VALUE, value.data(), nullptr);
    if (status != SANE_STATUS_GOOD)
        return {};
    if (option.type == SANE_TYPE_STRING)
        return utf8FromDriver(reinterpret_cast<const char*>(value.data()));
    if (option.type == SANE_TYPE_BOOL)
        return value[0] != SANE_FALSE ? "yes" : "no";
    std::string text;
    for (size_t i = 0; i < wordCount(option); ++i)
        text += (i == 0 ? "" : ",") + saneWordText(value[i], option.type == SANE_TYPE_FIXED);
    return text;
}

ScanStatus LibsaneScanner::setOption(const std::string& name, const std::string& value) {
    for (const auto& [index, option] : namedOptions()) {
        if (name != option->name)
            continue;
        if (!SANE_OPTION_IS_ACTIVE(option->cap))
            return refuse("It is not available with the present settings.");
        if (!SANE_OPTION_IS_SETTABLE(option->cap))
            return refuse("It can only be set at the scanner itself.");
        if (isWordType(option->type))
            return setWords(index, *option, value);
        if (option->type == SANE_TYPE_STRING)
            return setString(index, *option, value);
        SANE_Word unused = 0; // of a button
        return outcome(
            sane_control_option(handle_, index, SANE_ACTION_SET_VALUE, &unused, nullptr));
    }
    return refuse("There is no such option.");
}

// Nothing unless the option's constraint allows the value.
std::optional<SANE_Word> LibsaneScanner::allowedWord(const SANE_Option_Descriptor& option,
                                                     const std::string& text) {
    if (option.type == SANE_TYPE_BOOL) {
        const std::optional<bool> truth = booleanFromText(text);
        if (!truth)
            errorText_ = "It takes yes or no.";
        return truth ? std::optional(*truth ? SANE_TRUE : SANE_FALSE) : std::nullopt;
    }
    const bool isFixed = option.type == SANE_TYPE_FIXED;
    std::optional<SANE_Word> word = saneWordFromText(text, isFixed);
    // A decimal text of a fixed-point limit is rounded.
    const int64_t slack = isFixed ? 8 : 0;
    if (!word) {
        errorText_ = "It takes a number.";
    } else if (option.constraint_type == SANE_CONSTRAINT_RANGE) {
        const SANE_Range& range = *option.constraint.range;
        if (*word < int64_t{range.min} - slack || *word > int64_t{range.max} + slack) {
            errorText_ = "It takes values from " + saneWordText(range.min, isFixed) + " to " +
                         saneWordText(range.max, isFixed) + ".";
            return std::nullopt;
        }
        word = std::clamp(*word, range.min, range.max);
    } else if (option.constraint_type == SANE_CONSTRAINT_WORD_LIST) {
        const SANE_Word* list = option.constraint.word_list;
        const SANE_Word* end = list + 1 + list[0];
        const SANE_Word* found = std::find_if(list + 1, end, [&](SANE_Word choice) {
            return std::abs(int64_t{choice} - *word) <= slack;
        });
        word = found == end ? std::nullopt : std::optional(*found);
        if (!word)
            errorText_ = "It is not one of the values that the scanner offers.";
    }
    return word;
}

ScanStatus LibsaneScanner::setWords(SANE_Int index,
                                    const SANE_Option_Descriptor& option,
                                    const std::string& value) {
    const std::vector<std::string> parts = listParts(value);
    const size_t count = wordCount(option);
    if (count == 0 || (parts.size() != 1 && parts.size() != count))
        return refuse("It takes " + std::to_string(count) + " values.");
    std::vector<SANE_Word> words;
    for (size_t i = 0; i < count; ++i) {
        // A single value is used for all.
        const std::optional<SANE_Word> word = allowedWord(option, parts[i % parts.size()]);
        if (!word)
            return ScanStatus::invalid;
        words.push_back(*word);
    }
    SANE_Int information = 0;
    return outcome(
        sane_control_option(handle_, index, SANE_ACTION_SET_VALUE, words.data(), &information));
}

ScanStatus LibsaneScanner::setString(SANE_Int index,
                                     const SANE_Option_Descriptor& option,
                                     const std::string& value) {
    std::string text = value;
    if (option.constraint_type == SANE_CONSTRAINT_STRING_LIST) {
        OptionDescriptor described;
        describeConstraint(option, described);
        const std::optional<size_t> match = matchingChoice(described.choices, value);
        if (!match)
            return refuse("It is not one of the values that the scanner offers.");
        text = option.constraint.string_list[*match]; // in the driver's own spelling
    } else if (text.size() >= static_cast<size_t>(std::max(option.size, 1))) {
        return refuse("It is too long.");
    }
    // Drivers may write back up to option.size bytes; some do not count their longest choice's
    // zero.
    std::vector<char> buffer(
        std::max(static_cast<size_t>(std::max(option.size, 0)), text.size() + 1), '\0');
    std::memcpy(buffer.data(), text.data(), text.size());
    SANE_Int information = 0;
    return outcome(
        sane_control_option(handle_, index, SANE_ACTION_SET_VALUE, buffer.data(), &information));
}

ScanStatus LibsaneScanner::start() {
    return outcome(sane_start(handle_));
}

void LibsaneScanner::cancel() {
    sane_cancel(handle_);
}

std::optional<SaneParameters> LibsaneScanner::parameters() {
    SANE_Parameters given{};
    if (outcome(sane_get_parameters(handle_, &given)) != ScanStatus::good)
        return std::nullopt;
    SaneParameters result;
    result.frame = given.format >= SANE_FRAME_GRAY && given.format <= SANE_FRAME_BLUE
                       ? static_cast<SaneFrame>(given.format)
                       : SaneFrame::other;
    result.lastFrame = given.last_frame != SANE_FALSE;
    result.bytesPerLine = given.bytes_per_line;
    result.pixelsPerLine = given.pixels_per_line;
    result.lines = given.lines;
    result.depth = given.depth;
    return result;
}

SaneRead LibsaneScanner::read(std::span<uint8_t> room) {
    const size_t limit = std::min<size_t>(room.size(), std::numeric_limits<SANE_Int>::max());
    SANE_Int length = 0;
    const SANE_Status status =
        sane_read(handle_, room.data(), static_cast<SANE_Int>(limit), &length);
    if (status == SANE_STATUS_EOF)
        return {ScanStatus::good, true, 0};
    if (status != SANE_STATUS_GOOD)
        return {outcome(status), false, 0};
    if (length < 0 || static_cast<size_t>(length) > limit)
        return {outcome(SANE_STATUS_IO_ERROR), false, 0};
    return {ScanStatus::good, false, static_cast<size_t>(length)};
}

void LibsaneScanner::waitForData() {
    constexpr int milliseconds = 20;
    SANE_Int descriptor = -1;
    const bool canWait = sane_get_select_fd(handle_, &descriptor) == SANE_STATUS_GOOD;
    pollfd entry{canWait ? descriptor : -1, POLLIN, 0};
    // Without a descriptor the caller polls every few milliseconds.
    poll(&entry, 1, canWait ? milliseconds : milliseconds / 10);
}

} // namespace

std::unique_ptr<SaneScanner> makeLibsaneScanner() {
    return std::make_unique<LibsaneScanner>();
}

std::optional<std::vector<SaneDeviceEntry>> listSaneDevices() {
    const Session session;
    const SANE_Device** list = nullptr;
    if (!session.isInitialised() || sane_get_devices(&list, SANE_FALSE) != SANE_STATUS_GOOD ||
        list == nullptr)
        return std::nullopt;
    std::vector<SaneDeviceEntry> devices;
    for (; *list != nullptr; ++list)
        if ((*list)->name != nullptr)
            devices.push_back(
                {(*list)->name, utf8FromDriver((*list)->vendor), utf8FromDriver((*list)->model)});
    return devices;
}

} // namespace paperline::sources
