// What the C++ library of the WebAssembly compiler lacks of C++20, as far as the sources use it. It
// is included before each of them.
#pragma once

#include <version>

#if defined(__cplusplus) && defined(_LIBCPP_VERSION) && _LIBCPP_VERSION < 14000

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>

namespace std {

// The shortest digits that give the same number again.
inline string shortest_digits(double value) {
  char text[32];
  for (int digits = 0; digits < 17; ++digits) {
    snprintf(text, sizeof text, "%.*e", digits, value);
    if (strtod(text, nullptr) == value) break;
  }
  return text;
}

inline to_chars_result copy_chars(char* first, char* last, const string& text) {
  if (text.size() > static_cast<size_t>(last - first)) return {last, errc::value_too_large};
  memcpy(first, text.data(), text.size());
  return {first + text.size(), errc()};
}

inline to_chars_result to_chars(char* first, char* last, double value, chars_format /*fixed*/,
                                int precision) {
  string text(static_cast<size_t>(snprintf(nullptr, 0, "%.*f", precision, value)), ' ');
  snprintf(text.data(), text.size() + 1, "%.*f", precision, value);
  return copy_chars(first, last, text);
}

// Fixed notation without a precision: the shortest digits, at their places. Of numbers that are
// whole, all digits.
inline to_chars_result to_chars(char* first, char* last, double value, chars_format /*fixed*/) {
  const string shortest = shortest_digits(value);
  const int exponent = atoi(shortest.c_str() + shortest.find('e') + 1);
  const size_t point = shortest.find('.');
  const int decimals =
      (point == string::npos ? 0 : static_cast<int>(shortest.find('e') - point - 1)) - exponent;
  return to_chars(first, last, value, chars_format::fixed, decimals > 0 ? decimals : 0);
}

inline from_chars_result from_chars(const char* first, const char* last, double& value) {
  const string text(first, last);
  char* end = nullptr;
  const double number = strtod(text.c_str(), &end);
  if (end == text.c_str()) return {first, errc::invalid_argument};
  const char* const stop = first + (end - text.c_str());
  const bool is_tiny = number < 2.2250738585072014e-308 && number > -2.2250738585072014e-308;
  const bool has_digits = text.find_first_of("123456789") < text.find_first_of("eE");
  if (number > 1.7976931348623157e308 || number < -1.7976931348623157e308 ||
      (is_tiny && number == 0 && has_digits)) {
    return {stop, errc::result_out_of_range};
  }
  value = number;
  return {stop, errc()};
}

template <typename T>
unique_ptr<T> make_unique_for_overwrite(size_t count) {
  return unique_ptr<T>(new remove_extent_t<T>[count]);
}

}  // namespace std

#endif
