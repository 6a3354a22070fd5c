#include "platform/host/LocaleNames.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace paperline {
namespace {

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
bool isDigit(char c) {
    return c >= '0' && c <= '9';
}
bool isLetters(std::string_view text) {
    return std::all_of(text.begin(), text.end(), isLetter);
}
std::string lowered(std::string_view text) {
    std::string result(text);
    for (char& c : result)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return result;
}
std::string raised(std::string_view text) {
    std::string result(text);
    for (char& c : result)
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
    return result;
}

std::vector<std::string_view> splitAt(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    for (;;) {
        const size_t end = text.find(separator);
        parts.push_back(text.substr(0, end));
        if (end == std::string_view::npos)
            return parts;
        text.remove_prefix(end + 1);
    }
}

struct LocaleName {
    std::string language; // "de"; empty for C, POSIX and invalid names
    std::string script;   // "Hant"; only for Chinese
    std::string region;   // "DE" or "419"
};

std::string chineseScript(std::string_view region) {
    return region == "TW" || region == "HK" || region == "MO" ? "Hant" : "Hans";
}

// language[_script][_region][.codeset][@modifier]
LocaleName parseLocaleName(std::string_view text) {
    text = text.substr(0, text.find_first_of(".@"));
    std::string unified(text);
    std::replace(unified.begin(), unified.end(), '-', '_');
    const std::vector<std::string_view> parts = splitAt(unified, '_');
    if (parts[0].size() < 2 || parts[0].size() > 3 || !isLetters(parts[0]))
        return {};
    LocaleName name{lowered(parts[0]), {}, {}};
    // The language tables have one Norwegian.
    if (name.language == "nb" || name.language == "nn")
        name.language = "no";
    for (size_t index = 1; index < parts.size(); ++index) {
        const std::string_view part = parts[index];
        if (part.size() == 4 && isLetters(part))
            name.script = raised(part.substr(0, 1)) + lowered(part.substr(1));
        else if ((part.size() == 2 && isLetters(part)) ||
                 (part.size() == 3 && std::all_of(part.begin(), part.end(), isDigit)))
            name.region = raised(part);
    }
    if (name.language == "zh" && name.script.empty())
        name.script = chineseScript(name.region);
    else if (name.language != "zh")
        name.script.clear();
    return name;
}

std::string joined(const LocaleName& name) {
    std::string tag = name.language;
    for (const std::string& part : {name.script, name.region})
        if (!part.empty())
            tag += "-" + part;
    return tag;
}

// The first one that is not empty, as the C library does.
const std::string& messagesLocale(const LocaleEnvironment& environment) {
    if (!environment.lcAll.empty())
        return environment.lcAll;
    return !environment.lcMessages.empty() ? environment.lcMessages : environment.lang;
}

} // namespace

std::vector<std::string> preferredLanguagesOf(const LocaleEnvironment& environment) {
    std::vector<std::string_view> names = splitAt(environment.language, ':');
    names.push_back(messagesLocale(environment));
    std::vector<std::string> languages;
    for (std::string_view text : names) {
        const LocaleName name = parseLocaleName(text);
        const std::string tag = joined(name);
        if (!tag.empty() && std::find(languages.begin(), languages.end(), tag) == languages.end())
            languages.push_back(tag);
    }
    if (languages.empty())
        languages.push_back("en-US");
    return languages;
}

std::string localeIdentifierOf(const LocaleEnvironment& environment) {
    const LocaleName name = parseLocaleName(messagesLocale(environment));
    if (name.language.empty())
        return "en_US";
    return name.region.empty() ? name.language : name.language + "_" + name.region;
}

} // namespace paperline
