#include "keltrun2/codec/gzip.h"

#include <archive.h>
#include <archive_entry.h>

#include <memory>
#include <new>

namespace keltrun {
namespace {

struct ArchiveCloser {
  void operator()(archive* writer) const { archive_write_free(writer); }
};
struct EntryCloser {
  void operator()(archive_entry* entry) const { archive_entry_free(entry); }
};

la_ssize_t AppendPart(archive* /*writer*/, void* out, const void* part, std::size_t size) {
  static_cast<std::string*>(out)->append(static_cast<const char*>(part), size);
  return static_cast<la_ssize_t>(size);
}

// Everything happens in memory, so the only way to fail is to run out of it.
void Check(int result) {
  if (result != ARCHIVE_OK) throw std::bad_alloc();
}

}  // namespace

std::string Gzip(std::string_view bytes) {
  std::string out;
  const std::unique_ptr<archive, ArchiveCloser> writer(archive_write_new());
  const std::unique_ptr<archive_entry, EntryCloser> entry(archive_entry_new());
  if (!writer || !entry) throw std::bad_alloc();
  Check(archive_write_set_format_raw(writer.get()));
  Check(archive_write_add_filter_gzip(writer.get()));
  Check(archive_write_set_filter_option(writer.get(), "gzip", "timestamp", nullptr));
  Check(archive_write_set_bytes_per_block(writer.get(), 0));  // no padding after the member
  Check(archive_write_open(writer.get(), &out, nullptr, AppendPart, nullptr));
  archive_entry_set_filetype(entry.get(), AE_IFREG);
  Check(archive_write_header(writer.get(), entry.get()));
  if (archive_write_data(writer.get(), bytes.data(), bytes.size()) !=
      static_cast<la_ssize_t>(bytes.size())) {
    throw std::bad_alloc();
  }
  Check(archive_write_close(writer.get()));
  return out;
}

}  // namespace keltrun
