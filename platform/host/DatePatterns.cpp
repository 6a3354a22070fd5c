#include "platform/host/DatePatterns.h"

#include <cmath>
#include <memory>
#include <unicode/calendar.h>
#include <unicode/fieldpos.h>
#include <unicode/fpositer.h>
#include <unicode/locid.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>

namespace paperline {
namespace {

std::unique_ptr<icu::TimeZone> timeZoneNamed(const std::string& name) {
    if (!name.empty()) {
        std::unique_ptr<icu::TimeZone> zone(
            icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(name)));
        if (zone && *zone != icu::TimeZone::getUnknown())
            return zone;
    }
    return std::unique_ptr<icu::TimeZone>(icu::TimeZone::createDefault());
}

icu::Locale gregorianLocale(const std::string& identifier, UErrorCode& status) {
    icu::Locale locale(identifier.empty() ? "en_US" : identifier.c_str());
    locale.setKeywordValue("calendar", "gregorian", status);
    locale.setKeywordValue("numbers", "latn", status);
    return locale;
}

} // namespace

std::string formatDate(const FormatMoment& moment, const std::string& pattern) {
    if (!std::isfinite(moment.secondsSinceEpoch))
        return {};
    UErrorCode status = U_ZERO_ERROR;
    const icu::Locale locale = gregorianLocale(moment.localeIdentifier, status);
    icu::SimpleDateFormat format(icu::UnicodeString::fromUTF8(pattern), locale, status);
    if (U_FAILURE(status))
        return {};
    format.adoptTimeZone(timeZoneNamed(moment.timeZone).release());
    icu::UnicodeString text;
    // A double has a precision of about a quarter microsecond here, and .123 may be stored as less.
    format.format(std::floor(moment.secondsSinceEpoch * 1000.0 + 0.0005),
                  text,
                  static_cast<icu::FieldPositionIterator*>(nullptr),
                  status);
    if (U_FAILURE(status))
        return {};
    std::string result;
    return text.toUTF8String(result);
}

} // namespace paperline
