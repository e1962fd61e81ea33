// In place of lzh_reader.cpp in a library built without KELTRUN2_WITH_ARCHIVES.
#include "keltrun2/codec/lzh_reader.h"

namespace keltrun {

std::optional<std::vector<ExtractedFile>> ExtractArchive(const std::string& archive_name,
                                                         const std::string& folder,
                                                         std::string& error,
                                                         const ExtractionLimits& limits) {
  return ExtractArchiveBytes("", archive_name, folder, error, limits);
}

std::optional<std::vector<ExtractedFile>> ExtractArchiveBytes(std::string_view /*bytes*/,
                                                              const std::string& archive_name,
                                                              const std::string& /*folder*/,
                                                              std::string& error,
                                                              const ExtractionLimits& /*limits*/) {
  error = "cannot unpack " + archive_name +
          ": this version of the program reads no archives; unpack the file with another program "
          "and open what is in it";
  return std::nullopt;
}

}  // namespace keltrun
