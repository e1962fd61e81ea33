// Result pages: for any text, what opens also closes, and records stay within the limits of a
// runner's record.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "keltrun2/codec/html.h"
#include "keltrun2/io/foreign/html_reader.h"

namespace {

using namespace keltrun;

class Balance : public HtmlListener {
 public:
  void Open(std::string_view name, std::span<const HtmlAttribute> attributes,
            std::int32_t /*line*/) override {
    if (attributes.size() > static_cast<std::size_t>(kMostHtmlAttributes)) std::abort();
    open_.emplace_back(name);
    if (open_.size() > static_cast<std::size_t>(kMostHtmlDepth)) std::abort();
  }
  void Text(std::string_view text, std::int32_t /*line*/) override {
    if (text.empty()) std::abort();
  }
  void Close(std::string_view name) override {
    if (open_.empty() || open_.back() != name) std::abort();
    open_.pop_back();
  }
  bool IsDone() const { return open_.empty(); }

 private:
  std::vector<std::string> open_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  Balance balance;
  if (WalkHtml(text, balance) && !balance.IsDone()) std::abort();
  LooksLikeHtml(text);
  const ReadResult read = ReadHtml(text, {});
  if (read.records.classes.empty() != read.error.has_value()) std::abort();
  for (const ClassRecords& klass : read.records.classes) {
    if (klass.name.empty() || klass.codes.size() > 49 || klass.runners.empty()) std::abort();
    for (const auto& runner : klass.runners) {
      if (runner->LegCount() > 50) std::abort();
    }
  }
  return 0;
}
