// Reads the platform's table of texts: entries `"key" = "value";` between comments.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>

namespace paperline {

struct StringsFile {
    std::map<std::string, std::string> texts; // UTF-8; of a repeated key the last value
    bool damaged = false;                     // reading stopped early
    size_t damagedLine = 0;                   // from 1; 0 when whole
};

// The bytes are UTF-8 (a mark in front is skipped) or UTF-16 with a mark. Keys and values stand in
// quotes, or bare when they hold only letters, digits and _ - . / : $. A key without a value is its
// own text. Escapes: \" \' \\ \a \b \f \n \r \t \v, up to three octal digits, \Uxxxx (UTF-16
// units), and a backslash before a line's end. At the first damage (syntax, encoding, a zero
// character) the entries read so far are kept and the rest is left unread.
StringsFile parseStringsFile(std::span<const uint8_t> bytes);

} // namespace paperline
