#pragma once

#include <string>

#include "types/datatraits.h"
#include "types/parse_config.h"

namespace qve {

/// Parsers of values in text. All have one shape: they read the units from `begin` to `end` of `text`, whole (blanks at
/// the ends are the caller's to take off), and return true when these are no such value; the value is null then. A
/// number that does not fit, or that is the null of its type, is no such value. They depend on no locale and may run on
/// any thread.
template <class T>
using parse_function = bool (*)(T& value, unsigned begin, unsigned end, const char* text, const parse_config& config);

/// "0" and "1".
bool parse_bit_char(bit& value, unsigned begin, unsigned end, const char* text, const parse_config& config);
/// The texts for true and false of the format, in any case; and, where these are "true" and "false", "t" and "f".
bool parse_boolean_char(bit& value, unsigned begin, unsigned end, const char* text, const parse_config& config);

/// An optional sign and digits, which may be grouped by threes with the thousands separator.
bool parse_tiny_char(char& value, unsigned begin, unsigned end, const char* text, const parse_config& config);
bool parse_short_char(short& value, unsigned begin, unsigned end, const char* text, const parse_config& config);
bool parse_long_char(int& value, unsigned begin, unsigned end, const char* text, const parse_config& config);
bool parse_bigint_char(long long& value, unsigned begin, unsigned end, const char* text, const parse_config& config);
bool parse_uchr_char(unsigned char& value, unsigned begin, unsigned end, const char* text, const parse_config& config);
bool parse_usht_char(unsigned short& value, unsigned begin, unsigned end, const char* text, const parse_config& config);
bool parse_ulng_char(unsigned& value, unsigned begin, unsigned end, const char* text, const parse_config& config);
bool parse_oid_char(unsigned long long& value, unsigned begin, unsigned end, const char* text,
                    const parse_config& config);

/// Sign, digits, which may be grouped, a fraction, an exponent, and a percent sign behind, which divides by 100; or
/// "inf", "infinity", "nan" in any case. Rounded to the nearest value; beyond the range of the type it is no such
/// value.
bool parse_float_char(float& value, unsigned begin, unsigned end, const char* text, const parse_config& config);
bool parse_double_char(double& value, unsigned begin, unsigned end, const char* text, const parse_config& config);
/// A number as above with the currency text before or behind it, the sign on either side of the text, or in debit
/// brackets, which negate.
bool parse_currency_char(double& value, unsigned begin, unsigned end, const char* text, const parse_config& config);

/// "YYYY-MM-DD" with the date separator of the format; a sign before a year of more than four digits or before year 1.
bool parse_iso_date_char(date& value, unsigned begin, unsigned end, const char* text, const parse_config& config);
/// "YYYYMMDD".
bool parse_integer_date_char(date& value, unsigned begin, unsigned end, const char* text, const parse_config& config);
/// Three numbers in the date order of the format; between them twice the same separator: that of the format, "-", "/",
/// "." or one of the alternates. The month may be an English name or its first three letters. A year of two digits is
/// widened.
bool parse_ymd_date_char(date& value, unsigned begin, unsigned end, const char* text, const parse_config& config);
/// Any text form of a date that stands for itself: year first, with "-", "/" or ".".
bool parse_date_char(date& value, unsigned begin, unsigned end, const char* text, const parse_config& config);

/// A date as in parse_iso_date_char, the separator of the format, "T" or blanks, and a time of day "hh:mm[:ss[.ffff]]"
/// below 24 hours; a "Z" behind is allowed.
bool parse_iso_datetime_char(datetime& value, unsigned begin, unsigned end, const char* text,
                             const parse_config& config);
/// The same with a date as in parse_ymd_date_char; the time may have " AM" or " PM" behind it.
bool parse_ymd_datetime_char(datetime& value, unsigned begin, unsigned end, const char* text,
                             const parse_config& config);
/// The same with a date as in parse_date_char; without a time it is midnight.
bool parse_datetime_char(datetime& value, unsigned begin, unsigned end, const char* text, const parse_config& config);

/// "[-][[days:]hours:]minutes:seconds[.ffff]".
bool parse_iso_duration_char(duration& value, unsigned begin, unsigned end, const char* text,
                             const parse_config& config);
/// The same, or seconds alone.
bool parse_duration_char(duration& value, unsigned begin, unsigned end, const char* text, const parse_config& config);

/// The text of a field: quotes are taken off when they enclose it; inside them a doubled quote is one, and the escape
/// before a quote or another escape is left out. Elsewhere the escape is text, so that paths stay whole. True (and an
/// empty value) when a quote is not closed.
bool parse_varchar_char(std::string& value, unsigned begin, unsigned end, const char* text, const parse_config& config);

/// The parser that reads the text form of an atom type, whatever the width of its code units: char (UTF-8), char16_t or
/// char32_t.
template <class T, class Unit>
bool parse_value(T& value, unsigned begin, unsigned end, const Unit* text, const parse_config& config);

}  // namespace qve
