#include "ui/LanguageTable.h"

namespace paperline {
namespace {

constexpr auto languageCount = static_cast<int32_t>(languageTable.size());

const LanguageRow& row(int32_t language) {
    return languageTable[static_cast<size_t>(language)];
}

char asciiLower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool beginsWithCode(std::string_view preferredLanguage, std::string_view code) {
    return !code.empty() && preferredLanguage.size() >= code.size() &&
           asciiLower(preferredLanguage[0]) == code[0] &&
           asciiLower(preferredLanguage[1]) == code[1];
}

std::string twoDigits(int32_t language) {
    const std::string digits = std::to_string(language);
    return digits.size() < 2 ? "0" + digits : digits;
}

} // namespace

int32_t languageInTable(int32_t language) {
    return language >= 0 && language < languageCount ? language : languageEnglish;
}

int32_t languageOfLocale(std::string_view localeIdentifier) {
    for (int32_t language = 0; language < languageCount; ++language) {
        if (localeIdentifier == row(language).localeIdentifier)
            return language;
    }
    return languageEnglish;
}

std::string withoutRegion(std::string_view preferredLanguage) {
    const size_t first = preferredLanguage.find('-');
    if (first == std::string_view::npos)
        return std::string(preferredLanguage);
    const size_t second = preferredLanguage.find('-', first + 1);
    if (second == std::string_view::npos)
        return std::string(preferredLanguage.substr(0, first));
    if (preferredLanguage.find('-', second + 1) == std::string_view::npos)
        return std::string(preferredLanguage.substr(0, second));
    return std::string(preferredLanguage);
}

int32_t languageOfPreference(std::string_view preferredLanguage) {
    for (int32_t language = 0; language < languageCount; ++language) {
        if (!beginsWithCode(preferredLanguage, row(language).systemCode))
            continue;
        if (language == languageTraditionalChinese && !preferredLanguage.starts_with("zh-Hant"))
            return languageSimplifiedChinese;
        return language;
    }
    return languageEnglish;
}

int32_t systemLanguage(std::span<const std::string> preferredLanguages,
                       std::string_view brandList) {
    if (preferredLanguages.empty())
        return languageEnglish;
    const int32_t language = languageOfPreference(withoutRegion(preferredLanguages.front()));
    return isLanguageOffered(brandList, language) ? language : languageEnglish;
}

bool isLanguageOffered(std::string_view brandList, int32_t language) {
    return brandList.empty() || brandList.find(twoDigits(language)) != std::string_view::npos;
}

std::vector<int32_t> offeredLanguages(std::string_view brandList) {
    std::vector<int32_t> offered;
    for (int32_t language = 0; language < languageCount; ++language) {
        if (isLanguageOffered(brandList, language))
            offered.push_back(language);
    }
    return offered;
}

std::optional<int32_t> languageMenuPosition(std::string_view brandList, int32_t language) {
    if (brandList.empty())
        return std::nullopt;
    int32_t position = 0;
    for (const int32_t offered : offeredLanguages(brandList)) {
        if (offered == language)
            return position;
        ++position;
    }
    return std::nullopt;
}

} // namespace paperline
