// The viewer page as the library writes it; tests/viewer/viewer_test.py tests it in a browser.
#include <gtest/gtest.h>

#include <cstdint>

#include "keltrun2/codec/gzip.h"
#include "tests/data_block.h"

namespace keltrun::test {
namespace {

// A compressed file must end with its data: a browser refuses bytes after it.
TEST(Gzip, PacksWithoutPadding) {
  for (const std::size_t size : {std::size_t{1}, std::size_t{10240}, std::size_t{300000}}) {
    std::string bytes(size, 'x');
    for (std::size_t i = 0; i < size; i += 7) bytes[i] = static_cast<char>(i * i >> 3 & 0xFF);
    const std::string packed = Gzip(bytes);
    EXPECT_EQ(Unpacked(packed), bytes);
    std::uint32_t stated = 0;  // the last four bytes are the size of the data
    for (int i = 1; i <= 4; ++i)
      stated = stated << 8 | static_cast<std::uint8_t>(packed.rbegin()[i - 1]);
    EXPECT_EQ(stated, size);
  }
}

TEST(ViewerPage, HoldsTheAnalysisAndEscapesNames) {
  const auto root = NewRoot(Mode::kEnglishTexts);
  root->EventData()->EventName = "A & B</title><script>";
  const auto klass = root->AddClass("M\"21<b>");
  klass->ControlCount = 1;
  AddRunner(*klass, "</script><script>alert(1)", "0:01:30", {60, 30});
  const auto analyzer = root->NewAnalyzer();
  analyzer->AddClass(1);
  analyzer->Execute();
  const std::string page = root->HtmlControl()->OutputViewer({{analyzer, DataSetKind::kClass}});

  const auto holds = [&](std::string_view text) { return page.find(text) != std::string::npos; };
  EXPECT_TRUE(holds("<html lang=\"en\">"));
  EXPECT_TRUE(holds("<title>A &amp; B&lt;/title&gt;&lt;script&gt;</title>"));
  EXPECT_FALSE(holds("alert(1)"));
  const std::string opening =
      "<script type=\"application/gzip\" data-kind=\"class\" "
      "data-name=\"M&quot;21&lt;b&gt;\" data-runners=\"1\">";
  const std::size_t start = page.find(opening);
  ASSERT_NE(start, std::string::npos);
  const std::string_view data = std::string_view(page).substr(start + opening.size());
  EXPECT_EQ(Unpacked(FromBase64(data.substr(0, data.find('<')))),
            root->TextControl()->OutputJson(analyzer));
}

TEST(ViewerPage, NeedsAnalyses) {
  const auto root = NewRoot();
  EXPECT_THROW(root->HtmlControl()->OutputViewer({{nullptr, DataSetKind::kClass}}),
               AutomationError);
}

}  // namespace
}  // namespace keltrun::test
