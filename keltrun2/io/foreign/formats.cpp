#include "keltrun2/io/foreign/formats.h"

#include <algorithm>
#include <array>

#include "keltrun2/io/foreign/html_reader.h"
#include "keltrun2/io/foreign/iof2_reader.h"
#include "keltrun2/io/foreign/iof3_reader.h"
#include "keltrun2/io/foreign/oe_csv_reader.h"
#include "keltrun2/io/foreign/os_csv_reader.h"
#include "keltrun2/io/foreign/splitsbrowser_reader.h"
#include "keltrun2/io/foreign/swiss_csv_reader.h"
#include "keltrun2/io/foreign/triple_csv_reader.h"
#include "keltrun2/io/foreign/winsplits_reader.h"

namespace keltrun {
namespace {

// Formats without a sign of their own come last.
constexpr auto kFormats = std::to_array<ForeignFormat>({
    {KR_FILETYPE_IOF_XML_30_RESULT, LooksLikeIof3, ReadIof3},
    {KR_FILETYPE_IOF_XML_20_RESULT, LooksLikeIof2, ReadIof2},
    {KR_FILETYPE_OE_CSV, LooksLikeOeCsv, ReadOeCsv},
    {KR_FILETYPE_OS_CSV, LooksLikeOsCsv, ReadOsCsv},
    {KR_FILETYPE_RESULT_HTML, LooksLikeHtml, ReadHtml},
    {KR_FILETYPE_TRIPLE_CSV, LooksLikeTripleCsv, ReadTripleCsv},
    {KR_FILETYPE_SWISS_CSV, LooksLikeSwissCsv, ReadSwissCsv},
    {KR_FILETYPE_WINSPLITS_TEXT, LooksLikeWinSplits, ReadWinSplits},
    {KR_FILETYPE_SPLITSBROWSER_CSV, LooksLikeSplitsBrowser, ReadSplitsBrowser},
});

}  // namespace

std::span<const ForeignFormat> ForeignFormats() { return kFormats; }

const ForeignFormat* ForeignFormatOf(KrLapFileTypeConst type) {
  const auto found = std::find_if(kFormats.begin(), kFormats.end(),
                                  [&](const ForeignFormat& format) { return format.type == type; });
  return found == kFormats.end() ? nullptr : &*found;
}

}  // namespace keltrun
