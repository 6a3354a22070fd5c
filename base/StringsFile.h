// Reads strings files: entries `"key" = "value";` and comments.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>

namespace paperline {

struct StringsFile {
    std::map<std::string, std::string> texts; // UTF-8; the last value of a repeated key
    bool damaged = false;                     // reading stopped early
    size_t damagedLine = 0;                   // from 1; 0 if not damaged
};

// Takes UTF-8, with or without a byte-order mark, and UTF-16 with one. Keys and values need no
// quotes if they have only letters, digits and _ - . / : $. A key without a value is its own text.
// Escapes:
// \" \' \\ \a \b \f \n \r \t \v, up to three octal digits, \Uxxxx (UTF-16 units), and a backslash
// at the end of a line. Stops at the first fault (syntax, encoding, a zero character) and keeps the
// entries before it.
StringsFile parseStringsFile(std::span<const uint8_t> bytes);

} // namespace paperline
