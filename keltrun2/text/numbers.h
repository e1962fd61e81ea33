// Numbers in texts. Never follows the process's locale.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace keltrun {

/// The value of a text that is one number: sign, digits, one point, exponent, spaces outside; or
/// nullopt. Values too large for a double are no numbers.
std::optional<double> NumericValue(std::string_view text);

/// The number at the start of a text, 0 when there is none.
double LeadingNumber(std::string_view text);

/// Rounded to an integer, halves to even; 0 where it does not fit 32 bits.
std::int32_t RoundToLong(double value);

/// NumericValue rounded to an integer, 0 when the text is no number.
std::int32_t NumericLong(std::string_view text);

/// LeadingNumber rounded to an integer.
std::int32_t LeadingLong(std::string_view text);

/// The value by a numeric pattern: "0" is a digit always shown, "#" one shown when significant,
/// digits behind "." round halves away from zero; other characters around it are copied. A value
/// that is not finite reads as 0.
std::string FormatNumber(double value, std::string_view pattern);

/// The shortest decimal form that reads back as the value, without exponent: 4.5, 5, 12.25.
std::string FormatGeneral(double value);

}  // namespace keltrun
