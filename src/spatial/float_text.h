// Doubles to text and back as std::to_chars and std::from_chars do it. The WebAssembly build's
// standard library has only their integer forms; there the C library's correctly rounded printf
// and strtod give the same characters and values. Every other build uses the standard forms.
#ifndef ZANDO_SPATIAL_FLOAT_TEXT_H
#define ZANDO_SPATIAL_FLOAT_TEXT_H

#include <cctype>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <system_error>

namespace zando {

// Writes `value` in scientific notation with `digits` digits after the point; returns the end
// of the text, or `first` if it does not fit.
inline char* writeScientific(char* first, char* last, double value, int digits) {
#if defined(__cpp_lib_to_chars) || !defined(__EMSCRIPTEN__)
  const auto result = std::to_chars(first, last, value, std::chars_format::scientific, digits);
  return result.ec == std::errc() ? result.ptr : first;
#else
  const int length = std::snprintf(first, static_cast<size_t>(last - first), "%.*e", digits, value);
  return length > 0 && length < last - first ? first + length : first;
#endif
}

// Reads a double in fixed or scientific notation (no leading space, sign '+' or hexadecimal,
// as std::from_chars with chars_format::general).
inline std::from_chars_result readFloat(const char* first, const char* last, double& value) {
#if defined(__cpp_lib_to_chars) || !defined(__EMSCRIPTEN__)
  return std::from_chars(first, last, value, std::chars_format::general);
#else
  std::from_chars_result invalid{first, std::errc::invalid_argument};
  if (first == last) return invalid;
  const char* digits = first + (*first == '-' ? 1 : 0);
  if (digits == last || !(std::isdigit(static_cast<unsigned char>(*digits)) || *digits == '.' || *digits == 'i' ||
                          *digits == 'I' || *digits == 'n' || *digits == 'N')) {
    return invalid;
  }
  if (last - digits > 1 && digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X')) {
    value = 0.0;
    return {digits + 1, std::errc()};
  }
  const std::string text(first, last);
  char* end = nullptr;
  errno = 0;
  const double read = std::strtod(text.c_str(), &end);
  if (end == text.c_str()) return invalid;
  const char* ptr = first + (end - text.c_str());
  if (errno == ERANGE) return {ptr, std::errc::result_out_of_range};
  value = read;
  return {ptr, std::errc()};
#endif
}

}  // namespace zando

#endif  // ZANDO_SPATIAL_FLOAT_TEXT_H
