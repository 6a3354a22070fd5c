// Date and time tokens of the file-name template ("%YYYYMMDD", "%HHNNSS", ...).
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace paperline {

// Formats a moment (seconds since the epoch) by a date formatter pattern such as "YYYYMMdd".
using DateFormatter = std::function<std::string(double secondsSinceEpoch, const std::string&)>;

// True when `text` contains `needle`, letter case of A to Z aside. An empty needle is nowhere.
bool containsIgnoringCase(std::string_view needle, std::string_view text);

// Expands the first kind of token found, in the order of the table, at all its places. A token is
// found in any letter case but replaced only in capitals, so "%yyyy" ends the search unchanged.
std::string
expandFirstToken(std::string templateText, double nowSeconds, const DateFormatter& formatDate);

// Expands every token.
std::string
expandAllTokens(std::string templateText, double nowSeconds, const DateFormatter& formatDate);

} // namespace paperline
