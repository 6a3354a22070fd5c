#include "tests/sources/faulty/Fault.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace paperline::sources {

namespace {

constexpr std::array<std::string_view, 13> triplets{"open",
                                                    "close",
                                                    "enable",
                                                    "disable",
                                                    "info",
                                                    "setup",
                                                    "strip",
                                                    "native",
                                                    "filesetup",
                                                    "file",
                                                    "end",
                                                    "reset",
                                                    "extinfo"};

constexpr std::array<std::string_view, 3> effects{"-fail", "-cancel", "-hang"};

constexpr std::array<std::string_view, 20> ofSource{
    "vanish",          "info-width",    "info-height",     "info-bits",      "info-samples",
    "info-resolution", "strip-small",   "strip-break",     "strip-outside",  "strip-short",
    "strip-long",      "strip-rows",    "strip-empty",     "strip-endless",  "end-count",
    "callback-twice",  "callback-late", "callback-thread", "callback-never", "callback-close"};

constexpr std::array<std::string_view, 13> ofDevice{"device-jam",
                                                    "device-cover",
                                                    "device-empty",
                                                    "device-busy",
                                                    "device-denied",
                                                    "device-offline",
                                                    "device-error",
                                                    "device-memory",
                                                    "device-invalid",
                                                    "device-unsupported",
                                                    "device-cancel",
                                                    "device-crash",
                                                    "device-hang"};

template <typename Names> bool contains(const Names& names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

bool isKnown(std::string_view name) {
    if (contains(ofSource, name) || contains(ofDevice, name))
        return true;
    return std::any_of(effects.begin(), effects.end(), [&](std::string_view effect) {
        return name.ends_with(effect) &&
               contains(triplets, name.substr(0, name.size() - effect.size()));
    });
}

template <typename Number> bool parseNumber(std::string_view text, Number& number) {
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    return result.ec == std::errc() && result.ptr == text.data() + text.size();
}

bool parsePlace(std::string_view text, Fault& fault) {
    fault.place = Fault::Place::number;
    if (text == "first")
        fault.page = 1;
    else if (text == "middle")
        fault.place = Fault::Place::middle;
    else if (text == "last")
        fault.place = Fault::Place::last;
    else
        return parseNumber(text, fault.page) && fault.page >= 0;
    return true;
}

std::optional<Fault> parseFault(std::string_view text) {
    Fault fault;
    if (const size_t colon = text.find(':'); colon != std::string_view::npos) {
        int64_t value = 0;
        if (!parseNumber(text.substr(colon + 1), value))
            return std::nullopt;
        fault.value = value;
        text = text.substr(0, colon);
    }
    if (const size_t at = text.find('@'); at != std::string_view::npos) {
        if (!parsePlace(text.substr(at + 1), fault))
            return std::nullopt;
        text = text.substr(0, at);
    }
    if (!isKnown(text))
        return std::nullopt;
    fault.name = text;
    return fault;
}

} // namespace

bool Fault::strikes(int pageNumber, int pageCount) const {
    switch (place) {
    case Place::everyPage:
        return pageNumber > 0;
    case Place::number:
        return pageNumber == page;
    case Place::middle:
        return pageNumber == (pageCount + 1) / 2;
    case Place::last:
        return pageNumber == pageCount;
    }
    return false;
}

std::optional<FaultList> FaultList::parse(std::string_view text) {
    FaultList list;
    while (!text.empty()) {
        const size_t end = std::min(text.find(','), text.size());
        std::string_view part = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        part.remove_prefix(std::min(part.find_first_not_of(' '), part.size()));
        part = part.substr(0, part.find_last_not_of(' ') + 1);
        if (part.empty())
            continue;
        auto fault = parseFault(part);
        if (!fault)
            return std::nullopt;
        list.faults_.push_back(std::move(*fault));
    }
    return list;
}

const Fault* FaultList::find(std::string_view name, int pageNumber, int pageCount) const {
    const auto found = std::find_if(faults_.begin(), faults_.end(), [&](const Fault& fault) {
        return fault.name == name && fault.strikes(pageNumber, pageCount);
    });
    return found != faults_.end() ? &*found : nullptr;
}

const Fault* FaultList::find(std::string_view name) const {
    const auto found = std::find_if(
        faults_.begin(), faults_.end(), [&](const Fault& fault) { return fault.name == name; });
    return found != faults_.end() ? &*found : nullptr;
}

std::span<const std::string_view> faultyTriplets() {
    return triplets;
}
std::span<const std::string_view> sourceFaults() {
    return ofSource;
}
std::span<const std::string_view> deviceFaults() {
    return ofDevice;
}

} // namespace paperline::sources
