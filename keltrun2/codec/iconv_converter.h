// A converter of the C library.
#pragma once

#include <iconv.h>

#include <cstddef>

namespace keltrun {

/// An iconv descriptor. An instance belongs to one thread: a descriptor must not be shared.
class IconvConverter {
 public:
  IconvConverter(const char* to, const char* from) : handle_(iconv_open(to, from)) {}
  ~IconvConverter() {
    if (ok()) iconv_close(handle_);
  }
  IconvConverter(const IconvConverter&) = delete;
  IconvConverter& operator=(const IconvConverter&) = delete;

  // NOLINTNEXTLINE(performance-no-int-to-ptr): the failure value of iconv_open
  bool ok() const { return handle_ != reinterpret_cast<iconv_t>(-1); }

  /// Converts as far as the input is valid; false if it stopped before the end.
  bool Run(const char*& in, std::size_t& in_left, char*& out, std::size_t& out_left) {
    if (!ok()) return false;
    char* source = const_cast<char*>(in);  // iconv's signature; the bytes are not written
    const std::size_t rc = iconv(handle_, &source, &in_left, &out, &out_left);
    in = source;
    return rc != static_cast<std::size_t>(-1);
  }

  /// Writes what the converter holds back because the next byte could have changed it.
  void Flush(char*& out, std::size_t& out_left) {
    iconv(handle_, nullptr, nullptr, &out, &out_left);
  }

 private:
  iconv_t handle_;
};

}  // namespace keltrun
