#include "keltrun2/config/config_store.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <system_error>
#include <unordered_set>
#include <utility>

#include "keltrun2/codec/encodings.h"
#include "keltrun2/os/append_file.h"
#include "keltrun2/os/files.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/split.h"
#include "keltrun2/text/utf16.h"

namespace keltrun {
namespace {

namespace fs = std::filesystem;
using namespace std::string_view_literals;

constexpr std::string_view kMark = "\xFF\xFE"sv;
constexpr std::string_view kLineEnd = "\r\0\n\0"sv;

// Settings of real hosts are far smaller. Appending to a store above the first size compacts it, so
// that it stays small when a process runs for days. A store above the second size is not read, and
// no append makes a store that large.
constexpr std::size_t kCompactAbove = std::size_t{1} << 20;
constexpr std::size_t kLargestStore = std::size_t{8} << 20;

// An append takes a fraction of a millisecond. If the lock is held for a second, the process that
// holds it must have stopped.
constexpr FileLock::Patience kOneSecond = {500, 0.002};

std::string LockName(const std::string& file) { return file + ".lock"; }

void AppendUtf16(std::string& out, std::string_view text) {
  for (const char16_t unit : ToUtf16(text)) {
    out += static_cast<char>(unit & 0xFF);
    out += static_cast<char>(unit >> 8);
  }
}

std::string StoreText(std::string_view bytes) {
  if (bytes.starts_with(kMark)) return DecodeUtf16(bytes.substr(kMark.size()), false).Text;
  const bool lost_mark = bytes.find('\0') != std::string_view::npos;
  return lost_mark ? DecodeUtf16(bytes, false).Text : DecodeTextFile(bytes);
}

bool HasStoreEnd(std::string_view bytes) {
  return bytes.size() % 2 == 0 && (bytes.size() == kMark.size() || bytes.ends_with(kLineEnd));
}

// Whether a line appended to these bytes could be read.
bool TakesLines(std::string_view bytes) { return bytes.starts_with(kMark) && HasStoreEnd(bytes); }

bool IsTooLarge(const std::string& file) {
  std::error_code code;
  const std::uintmax_t size = fs::file_size(file, code);
  return !code && size > kLargestStore;
}

bool PutAside(const std::string& file) {
  std::error_code code;
  fs::rename(file, file + ".damaged", code);
  return !code;
}

// The bytes of the file, empty if there is no file; nullopt if it is too large or cannot be read.
std::optional<std::string> StoreBytes(const std::string& file) {
  if (!FileExists(file)) return "";
  if (IsTooLarge(file)) return std::nullopt;
  std::string error;
  return ReadFile(file, error);
}

bool CreateStoreFolder(const std::string& file) {
  std::string error;
  return CreateFolder(file.substr(0, file.rfind('/')), error);
}

// Only a regular file may be replaced: writing to a pipe would wait for its reader, and a file that
// cannot be examined may contain settings.
bool IsReplaceable(const std::string& file) {
  std::error_code code;
  const fs::file_type type = fs::status(file, code).type();
  return type == fs::file_type::regular || type == fs::file_type::not_found;
}

// Replaces the store by its compacted form and updates `bytes`. Requires the lock.
bool WriteCompacted(const std::string& file, std::string& bytes) {
  if (!IsReplaceable(file)) return false;
  std::string compacted = FormatConfigStore(ParseConfigStore(bytes));
  std::string error;
  if (compacted == bytes) return true;
  if (!WriteFile(file, compacted, error)) return false;
  bytes = std::move(compacted);
  return true;
}

}  // namespace

std::vector<std::string> ParseConfigStore(std::string_view bytes) {
  const std::string text = StoreText(bytes);
  std::vector<std::string_view> all = SplitLines(text);
  std::unordered_set<std::string_view> names;
  std::vector<std::string> lines;
  for (auto line = all.rbegin(); line != all.rend(); ++line) {
    if (TrimSpaces(*line).empty()) continue;
    if (names.insert(SplitAt(*line, "=", true).first).second) lines.emplace_back(*line);
  }
  std::reverse(lines.begin(), lines.end());
  return lines;
}

std::string FormatConfigStore(const std::vector<std::string>& lines) {
  std::string bytes(kMark);
  for (const std::string& line : lines) {
    AppendUtf16(bytes, line);
    bytes += kLineEnd;
  }
  return bytes;
}

std::optional<std::string> ReadConfigStore(const std::string& file) {
  std::optional<std::string> bytes = StoreBytes(file);
  if (!bytes || bytes->empty() || HasStoreEnd(*bytes)) return bytes;
  const FileLock lock(LockName(file), kOneSecond);
  return StoreBytes(file);
}

bool CompactConfigStore(const std::string& file, const FileLock::Patience& patience) {
  if (!CreateStoreFolder(file)) return false;
  const FileLock lock(LockName(file), patience);
  if (!lock.IsHeld()) return false;
  if (IsTooLarge(file) && !PutAside(file)) return false;
  std::optional<std::string> bytes = StoreBytes(file);
  return bytes && WriteCompacted(file, *bytes);
}

bool AppendToConfigStore(const std::string& file, std::string_view line) {
  if (!CreateStoreFolder(file)) return false;
  const FileLock lock(LockName(file), kOneSecond);
  if (!lock.IsHeld()) return false;
  std::optional<std::string> bytes = StoreBytes(file);
  if (!bytes) return false;
  const bool compact = !TakesLines(*bytes) || bytes->size() > kCompactAbove;
  if (compact && !WriteCompacted(file, *bytes)) return false;
  std::string addition;
  AppendUtf16(addition, line);
  addition += kLineEnd;
  return bytes->size() + addition.size() <= kLargestStore && AppendToFile(file, addition);
}

}  // namespace keltrun
