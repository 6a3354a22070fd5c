#include "output/NameTemplate.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace paperline {

namespace {

struct Token {
    const char* text;
    const char* pattern;
    bool isMonthName;
};

// Longer tokens stand before those that begin like them. "YYYY" is the week-based year: around New
// Year it may differ from the calendar's.
constexpr std::array<Token, 9> tokens{{
    {"%YYYYMMDD", "YYYYMMdd", false},
    {"%YYYY", "YYYY", false},
    {"%MMM", "M", true},
    {"%MM", "MM", false},
    {"%DD", "dd", false},
    {"%HHNNSS", "HHmmss", false},
    {"%HH", "HH", false},
    {"%NN", "mm", false},
    {"%SS", "ss", false},
}};

constexpr std::array<const char*, 12> monthNames{
    "JAN", "FEB", "MAR", "APR", "MAY", "JUN", "JUL", "AUG", "SEP", "OCT", "NOV", "DEC"};

// The month's name looks one hour ahead of every other token.
constexpr double monthNameLeadSeconds = 3600;

char lowered(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

std::string monthName(const std::string& monthNumber) {
    const int number = std::atoi(monthNumber.c_str());
    return monthNames[number >= 2 && number <= 12 ? static_cast<size_t>(number - 1) : 0];
}

std::string valueOf(const Token& token, double nowSeconds, const DateFormatter& formatDate) {
    if (token.isMonthName)
        return monthName(formatDate(nowSeconds + monthNameLeadSeconds, token.pattern));
    return formatDate(nowSeconds, token.pattern);
}

std::string replaceAll(const std::string& text, std::string_view from, std::string_view to) {
    std::string result;
    size_t start = 0;
    for (size_t found = text.find(from); found != std::string::npos;
         found = text.find(from, start)) {
        result.append(text, start, found - start).append(to);
        start = found + from.size();
    }
    return result.append(text, start);
}

} // namespace

bool containsIgnoringCase(std::string_view needle, std::string_view text) {
    return !needle.empty() &&
           std::search(text.begin(), text.end(), needle.begin(), needle.end(), [](char a, char b) {
               return lowered(a) == lowered(b);
           }) != text.end();
}

std::string
expandFirstToken(std::string templateText, double nowSeconds, const DateFormatter& formatDate) {
    for (const Token& token : tokens) {
        if (containsIgnoringCase(token.text, templateText))
            return replaceAll(templateText, token.text, valueOf(token, nowSeconds, formatDate));
    }
    return templateText;
}

std::string
expandAllTokens(std::string templateText, double nowSeconds, const DateFormatter& formatDate) {
    for (const Token& token : tokens) {
        if (templateText.find(token.text) != std::string::npos)
            templateText =
                replaceAll(templateText, token.text, valueOf(token, nowSeconds, formatDate));
    }
    return templateText;
}

} // namespace paperline
