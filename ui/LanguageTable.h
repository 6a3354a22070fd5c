// The 27 interface languages and the pure rules that choose among them. A language is known by its
// index in the table, which is also what the settings store.
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
    const char* menuName;   // shown as it stands, in whatever language it is written
};

inline constexpr int32_t languageEnglish = 0;
inline constexpr int32_t languageTraditionalChinese = 1;
inline constexpr int32_t languageSimplifiedChinese = 2;
inline constexpr int32_t languageArabic = 26; // the one that is written from right to left

// "br" and "dk" begin no system's language list, and Canadian French has no test of its own: these
// three are reached through the menu or the settings only. The names are mixed on purpose.
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

// The index itself, or English for one outside the table.
int32_t languageInTable(int32_t language);

// By exact comparison with the locale column ("de_DE"); English when nothing matches.
int32_t languageOfLocale(std::string_view localeIdentifier);

// "zh-Hant-TW" becomes "zh-Hant", "pt-BR" becomes "pt": the region goes, a script stays. One part
// or more than three are left alone.
std::string withoutRegion(std::string_view preferredLanguage);

// The language of the first preferred language (already without its region); English when none
// matches.
int32_t languageOfPreference(std::string_view preferredLanguage);

// The first of the system's preferred languages ("de-DE") when the brand offers it, else English.
int32_t systemLanguage(std::span<const std::string> preferredLanguages, std::string_view brandList);

// A brand's list is "00,01,..."; an empty one offers every language. Membership is a substring
// test.
bool isLanguageOffered(std::string_view brandList, int32_t language);
std::vector<int32_t> offeredLanguages(std::string_view brandList);

// Position of the language's entry in the menu of a brand with a list; nothing without a list or
// for a language that is not in it.
std::optional<int32_t> languageMenuPosition(std::string_view brandList, int32_t language);

} // namespace paperline
