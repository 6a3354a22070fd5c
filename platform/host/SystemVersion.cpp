#include "platform/host/SystemVersion.h"

#include <charconv>
#include <limits>
#include <sstream>
#include <string_view>

namespace paperline {
namespace {

std::string_view unquoted(std::string_view value) {
    while (!value.empty() && (value.back() == ' ' || value.back() == '\t' || value.back() == '\r'))
        value.remove_suffix(1);
    if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') &&
        value.back() == value.front())
        return value.substr(1, value.size() - 2);
    return value;
}

// Removes the number before the next dot of "15.6.1" from the text and returns it; 0 if there is
// none.
int takeComponent(std::string_view& text) {
    const size_t dot = text.find('.');
    const std::string_view part = text.substr(0, dot);
    text = dot == std::string_view::npos ? std::string_view() : text.substr(dot + 1);
    int number = 0;
    const auto [end, failure] = std::from_chars(part.data(), part.data() + part.size(), number);
    if (failure == std::errc::result_out_of_range)
        return std::numeric_limits<int>::max();
    return failure == std::errc() && number >= 0 ? number : 0;
}

} // namespace

SystemVersion parseSystemVersion(const std::string& osReleaseText) {
    constexpr std::string_view key = "VERSION_ID=";
    SystemVersion version;
    std::istringstream lines(osReleaseText);
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with(key))
            continue;
        std::string_view text = unquoted(std::string_view(line).substr(key.size()));
        version.majorNumber = takeComponent(text);
        version.minorNumber = takeComponent(text);
        version.bugFix = takeComponent(text);
    }
    return version;
}

} // namespace paperline
