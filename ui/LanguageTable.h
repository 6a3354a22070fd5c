// The 27 interface languages and how one is chosen. Settings store a language's index in the table.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace paperline {

struct LanguageRow {
    const char* resourceFolder;   // below the application's resources
    const char* localeIdentifier; // of the system's locale
    const char* systemCode; // first two letters of a preferred language; empty: never detected
    const char* menuName;
};

inline constexpr int32_t languageEnglish = 0;
inline constexpr int32_t languageTraditionalChinese = 1;
inline constexpr int32_t languageSimplifiedChinese = 2;
inline constexpr int32_t languageArabic = 26; // the only one from right to left

// On purpose: no system language begins with "br" or "dk", and Canadian French has no code, so
// these three can only be chosen in the menu. Some names are in English, others in their own
// language.
inline constexpr std::array<LanguageRow, 27> languageTable{{
    {"en.lproj", "en_US", "en", "English"},
    {"zh-Hant.lproj", "zh_TW", "zh", "繁體中文"},
    {"zh-Hans.lproj", "zh_CN", "zh", "简体中文"},
    {"ja.lproj", "ja_JP", "ja", "日本語"},
    {"ko.lproj", "ko_KR", "ko", "한국어"},
    {"de.lproj", "de_DE", "de", "Deutsch"},
    {"fr.lproj", "fr_FR", "fr", "Français"},
    {"es.lproj", "es_ES", "es", "Español"},
    {"it.lproj", "it_IT", "it", "Italiano"},
    {"cs.lproj", "cs_CZ", "cs", "Čeština"},
    {"pt-BR.lproj", "pt_BR", "br", "Português (Brasil)"},
    {"ru.lproj", "ru_RU", "ru", "Русский"},
    {"pt.lproj", "pt_PT", "pt", "Portuguese"},
    {"pl.lproj", "pl_PL", "pl", "Polski"},
    {"bg.lproj", "bg_BG", "bg", "Български"},
    {"da-DK.lproj", "da_DK", "dk", "Dansk"},
    {"nl.lproj", "nl_NL", "nl", "Nederlands"},
    {"fi.lproj", "fi_FI", "fi", "Finnish"},
    {"fr-CA.lproj", "fr_CA", "", "French Canada"},
    {"el.lproj", "el_GR", "el", "Greek"},
    {"hu.lproj", "hu_HU", "hu", "Magyar"},
    {"nb.lproj", "no_NO", "no", "Norsk"},
    {"ro.lproj", "ro_RO", "ro", "Romanian"},
    {"sk.lproj", "sk_SK", "sk", "Slovenčina"},
    {"sv.lproj", "sv_SE", "sv", "Svenska"},
    {"tr.lproj", "tr_TR", "tr", "Turkish"},
    {"ar.lproj", "ar_AE", "ar", "Arabic"},
}};

// The index, or English for one outside the table.
int32_t languageInTable(int32_t language);

// The language of a locale ("de_DE"), or English.
int32_t languageOfLocale(std::string_view localeIdentifier);

// "zh-Hant-TW" becomes "zh-Hant", "pt-BR" becomes "pt": without the region, with the script. One
// part or more than three stay as they are.
std::string withoutRegion(std::string_view preferredLanguage);

// The language of a preferred language without region ("de"), or English.
int32_t languageOfPreference(std::string_view preferredLanguage);

// The first of the system's preferred languages ("de-DE") when the brand offers it, else English.
int32_t systemLanguage(std::span<const std::string> preferredLanguages, std::string_view brandList);

// A brand's list is "00,01,..."; an empty one offers every language.
bool isLanguageOffered(std::string_view brandList, int32_t language);
std::vector<int32_t> offeredLanguages(std::string_view brandList);

// Position of the language in the menu of a brand with a list; nothing without a list or when the
// list does not have it.
std::optional<int32_t> languageMenuPosition(std::string_view brandList, int32_t language);

} // namespace paperline
