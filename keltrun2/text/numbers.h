// Reading numbers from texts and formatting them. Nothing here depends on the locale.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace keltrun {

/// The value of a text that is a number and nothing else: an optional sign, digits with at most one
/// point, an optional exponent, spaces around it. nullopt for other texts and for values that do
/// not fit a double.
std::optional<double> NumericValue(std::string_view text);

/// The number at the start of a text, 0 if there is none.
double LeadingNumber(std::string_view text);

/// The value rounded to an integer, halves to even; 0 if it does not fit 32 bits.
std::int32_t RoundToLong(double value);

/// NumericValue rounded to an integer, 0 if the text is not a number.
std::int32_t NumericLong(std::string_view text);

/// LeadingNumber rounded to an integer.
std::int32_t LeadingLong(std::string_view text);

/// Formats the value by a numeric pattern: "0" is a digit that is always shown, "#" one that is
/// shown only if it is significant. The value is rounded to the digits after ".", halves away from
/// zero. The characters before and after the pattern are copied. A value that is not finite is
/// formatted as 0.
std::string FormatNumber(double value, std::string_view pattern);

/// The shortest decimal form that reads back as the same value, without an exponent: 4.5, 5, 12.25.
/// "0" for a value that is not finite.
std::string FormatGeneral(double value);

/// Appends a whole number.
void AppendInteger(std::string& out, std::int64_t value);

/// Appends a number of thousandths as a decimal number, rounded half away from zero to a whole
/// number of them, without zeros at the end and never with an exponent: 1500 is "1.5".
void AppendThousandths(std::string& out, double units);
/// The same for millionths.
void AppendMillionths(std::string& out, double units);

}  // namespace keltrun
