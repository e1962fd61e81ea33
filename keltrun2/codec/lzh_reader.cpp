#include "keltrun2/codec/lzh_reader.h"

#include <archive.h>
#include <archive_entry.h>
#include <locale.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <string_view>
#include <utility>

#include "keltrun2/codec/archive_kind.h"
#include "keltrun2/codec/encodings.h"
#include "keltrun2/codec/utf8.h"
#include "keltrun2/os/files.h"

namespace keltrun {
namespace {

// Makes the thread's locale UTF-8. libarchive converts names to the charset of that locale and
// fails if the charset does not have their characters.
class Utf8Locale {
 public:
  Utf8Locale() {
    for (const char* name : {"C.UTF-8", "en_US.UTF-8", "ja_JP.UTF-8"}) {
      locale_ = newlocale(LC_CTYPE_MASK, name, locale_t{});
      if (locale_ == locale_t{}) continue;
      before_ = uselocale(locale_);
      return;
    }
  }
  ~Utf8Locale() {
    if (locale_ == locale_t{}) return;
    uselocale(before_);
    freelocale(locale_);
  }
  Utf8Locale(const Utf8Locale&) = delete;
  Utf8Locale& operator=(const Utf8Locale&) = delete;

 private:
  locale_t locale_{};
  locale_t before_{};
};

// --- the parts of a member's header that libarchive does not report ---

// A number in the header, lowest byte first. Bytes beyond the end are read as 0.
std::size_t Number(std::string_view header, std::size_t at, std::size_t bytes) {
  std::size_t value = 0;
  for (std::size_t i = bytes; i-- > 0;) {
    value = value << 8 | (at + i < header.size() ? static_cast<std::uint8_t>(header[at + i]) : 0);
  }
  return value;
}

std::size_t Level(std::string_view header) { return Number(header, 20, 1); }

// Whether a level 3 header claims to be longer than the rest of the archive. libarchive would
// allocate as many bytes as it claims, up to 4 GiB.
bool IsCut(std::string_view header) {
  return Level(header) == 3 && Number(header, 24, 4) > header.size();
}

// The bytes of a member's name. libarchive cannot provide them: it rejects names with bytes that
// are not characters, and in level 0 headers it takes a second byte 0x5C for a separator.
struct RawName {
  std::string_view Bytes;
  std::size_t CodePage = 932;
  std::string_view Utf16;  // if present, the same name with characters that Bytes cannot express
};

RawName ReadName(std::string_view header) {
  const std::size_t level = Level(header);
  RawName name;
  if (level < 2 && header.size() > 22) name.Bytes = header.substr(22, Number(header, 21, 1));
  if (level == 0) return name;
  const std::size_t width = level == 3 ? 4 : 2;  // of the size field of an extended header
  std::size_t at = level == 1 ? Number(header, 0, 1) : level == 2 ? 24 : 28;
  while (true) {
    const std::size_t size = Number(header, at, width);
    if (size <= width || size > header.size() - at) return name;
    const std::string_view data = header.substr(at + width + 1, size - width - 1);
    switch (Number(header, at + width, 1)) {
      case 0x01:
        name.Bytes = data;
        break;
      case 0x44:
        name.Utf16 = data;
        break;
      case 0x46:
        name.CodePage = Number(data, 0, 4);
        break;
    }
    at += size;
  }
}

// --- names ---

std::string DecodedName(RawName name) {
  if (!name.Utf16.empty()) return DecodeUtf16(name.Utf16, false).Text;
  if (name.CodePage == 65001) return std::string(name.Bytes);
  // In other names 0xFF, which is not part of any Shift-JIS character, separates the parts.
  name.Bytes.remove_prefix(name.Bytes.rfind('\xFF') + 1);
  return Decode(name.Bytes, Charset::kShiftJis).Text;
}

// The part after the last separator, whichever system wrote the archive.
std::string LastPart(std::string_view name) {
  const std::size_t separator = name.find_last_of("/\\:");
  return std::string(separator == std::string_view::npos ? name : name.substr(separator + 1));
}

// Cuts the base name so that the file system accepts the name, with room for a number.
std::string Shortened(const std::string& name) {
  constexpr std::size_t kLongest = 240;
  if (name.size() <= kLongest) return name;
  const std::size_t dot = name.rfind('.');
  const std::string extension =
      dot != std::string::npos && name.size() - dot <= 16 ? name.substr(dot) : "";
  std::size_t end = kLongest - extension.size();
  while (end > 0 && (static_cast<std::uint8_t>(name[end]) & 0xC0) == 0x80) --end;
  return name.substr(0, end) + extension;
}

// Makes a file name from any name. The result is never empty, a folder or a path.
std::string SafeName(std::string_view name) {
  std::string out = LastPart(ValidUtf8(name));
  for (char& c : out) {
    if (static_cast<std::uint8_t>(c) < 0x20 || c == 0x7F) c = '_';
  }
  if (out.empty() || out == "." || out == "..") return "_";
  return Shortened(out);
}

std::string WithNumber(const std::string& name, std::size_t number) {
  if (number == 1) return name;
  std::size_t dot = name.rfind('.');
  if (dot == std::string::npos || dot == 0) dot = name.size();
  return name.substr(0, dot) + "-" + std::to_string(number) + name.substr(dot);
}

// --- extraction ---

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using FileHandle = std::unique_ptr<std::FILE, FileCloser>;

// Unpacks one archive.
class Extraction {
 public:
  Extraction(std::string_view bytes, std::string folder, const ExtractionLimits& limits)
      : bytes_(bytes), folder_(std::move(folder)), limits_(limits) {}

  // False on failure: then Reason() says why, and all extracted files have been removed.
  bool Run() {
    if (Open() && ExtractAll()) return true;
    for (const ExtractedFile& file : files_) unlink(file.Path.c_str());
    return false;
  }
  std::vector<ExtractedFile>& Files() { return files_; }
  const std::string& Reason() const { return reason_; }

 private:
  struct ArchiveCloser {
    void operator()(archive* reader) const { archive_read_free(reader); }
  };

  bool Fail(const std::string& reason) {
    reason_ = reason;
    return false;
  }
  bool FailAsReaderSays() {
    const char* text = archive_error_string(reader_.get());
    return Fail(text != nullptr ? text : "it is damaged");
  }
  bool FailFor(const std::string& member, const std::string& reason) {
    return Fail("member " + member + ": " + reason);
  }

  bool Open() {
    // libarchive would also look for an archive inside a program, where header_ would not be right.
    if (bytes_.starts_with("MZ")) {
      return Fail("it is a program, expected an LZH archive");
    }
    reader_.reset(archive_read_new());
    if (!reader_) return Fail("out of memory");
    archive_read_support_format_lha(reader_.get());
    // In ISO-8859-1 every byte is a character, so libarchive rejects no name. See RawName.
    archive_read_set_options(reader_.get(), "hdrcharset=ISO-8859-1");
    const int result = archive_read_open_memory(reader_.get(), bytes_.data(), bytes_.size());
    return result == ARCHIVE_OK || FailAsReaderSays();
  }

  bool ExtractAll() {
    while (true) {
      header_ = bytes_.substr(std::min(Position(), bytes_.size()));
      if (IsCut(header_)) return Fail("a header is larger than the archive");
      archive_entry* entry = nullptr;
      const int result = archive_read_next_header(reader_.get(), &entry);
      if (result == ARCHIVE_EOF) return true;
      if (result != ARCHIVE_OK && result != ARCHIVE_WARN) return FailAsReaderSays();
      if (archive_entry_filetype(entry) == AE_IFREG && !ExtractMember(entry)) return false;
      if (archive_read_data_skip(reader_.get()) != ARCHIVE_OK) return FailAsReaderSays();
    }
  }

  // The offset of the next header. Valid between members.
  std::size_t Position() const {
    return static_cast<std::size_t>(archive_filter_bytes(reader_.get(), 0));
  }

  bool ExtractMember(archive_entry* entry) {
    if (files_.size() == limits_.Members)
      return Fail("it contains more than " + std::to_string(limits_.Members) + " files");
    const std::string name = SafeName(DecodedName(ReadName(header_)));
    return ReadMember(entry, name) && SaveMember(name);
  }

  // Reads the bytes into member_, no more than the header and the limits allow. libarchive checks
  // the checksum.
  bool ReadMember(archive_entry* entry, const std::string& name) {
    const auto size =
        static_cast<std::uint64_t>(std::max<la_int64_t>(archive_entry_size(entry), 0));
    if (size > limits_.MemberBytes) {
      return FailFor(name,
                     "it is larger than " + std::to_string(limits_.MemberBytes >> 20) + " MiB");
    }
    if (size > limits_.TotalBytes - total_) {
      return Fail("its files together are larger than " + std::to_string(limits_.TotalBytes >> 20) +
                  " MiB");
    }
    member_.clear();
    int empty_reads = 0;  // a few are normal at the end
    while (true) {
      const void* part = nullptr;
      std::size_t part_size = 0;
      la_int64_t offset = 0;
      const int result = archive_read_data_block(reader_.get(), &part, &part_size, &offset);
      if (result == ARCHIVE_EOF) break;
      if (result != ARCHIVE_OK || (part_size == 0 && ++empty_reads > 100)) {
        FailAsReaderSays();
        return FailFor(name, std::string(reason_));
      }
      if (part_size > size - member_.size()) return FailFor(name, "it is damaged (too long)");
      if (part_size > 0) member_.append(static_cast<const char*>(part), part_size);
    }
    if (member_.size() != size) return FailFor(name, "it is damaged (too short)");
    total_ += member_.size();
    return true;
  }

  bool SaveMember(const std::string& name) {
    std::size_t& number = last_numbers_[name];
    while (true) {
      const std::string file_name = WithNumber(name, ++number);
      const std::string path = folder_ + file_name;
      // "x": fails if the file exists or is a link.
      FileHandle file(std::fopen(path.c_str(), "wbxe"));
      if (!file && errno == EEXIST) continue;
      if (!file) return FailFor(name, "cannot write " + path + ": " + std::strerror(errno));
      files_.push_back({file_name, path});
      const bool written =
          std::fwrite(member_.data(), 1, member_.size(), file.get()) == member_.size();
      if (std::fclose(file.release()) == 0 && written) return true;
      return FailFor(name, "cannot write " + path + ": " + std::strerror(errno));
    }
  }

  std::string_view bytes_;
  std::string_view header_;  // the header of the current member, and everything after it
  std::string folder_;
  ExtractionLimits limits_;
  std::unique_ptr<archive, ArchiveCloser> reader_;
  std::string member_;
  std::size_t total_ = 0;
  std::map<std::string, std::size_t> last_numbers_;  // the last number used for each name
  std::vector<ExtractedFile> files_;
  std::string reason_;
};

}  // namespace

std::optional<std::vector<ExtractedFile>> ExtractArchive(const std::string& archive_name,
                                                         const std::string& folder,
                                                         std::string& error,
                                                         const ExtractionLimits& limits) {
  const std::optional<std::string> bytes = ReadFile(archive_name, error);
  if (!bytes) return std::nullopt;
  return ExtractArchiveBytes(*bytes, archive_name, folder, error, limits);
}

std::optional<std::vector<ExtractedFile>> ExtractArchiveBytes(std::string_view bytes,
                                                              const std::string& archive_name,
                                                              const std::string& folder,
                                                              std::string& error,
                                                              const ExtractionLimits& limits) {
  const std::string_view kind = KindOfArchive(bytes);
  if (!kind.empty() && kind != "LZH") {
    error = "cannot unpack " + archive_name + ": it is a " + std::string(kind) +
            " archive, expected an LZH archive";
    return std::nullopt;
  }
  const Utf8Locale locale;
  Extraction extraction(bytes, WithTrailingSeparator(folder), limits);
  if (extraction.Run()) return std::move(extraction.Files());
  error = "cannot unpack " + archive_name + ": " + extraction.Reason();
  return std::nullopt;
}

}  // namespace keltrun
