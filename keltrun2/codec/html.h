// Reading HTML pages as a browser does, however sloppy they are.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace keltrun {

/// An attribute of a tag, with references resolved. Names are in lower case.
struct HtmlAttribute {
  std::string_view name, value;
};

/// What is told of a page, in its order. The views are valid during the call only. Every element
/// that opens also closes, void ones such as "br" at once; end tags that the page omits are filled
/// in, but a cell or row that was opened inside another one need not have closed it before.
class HtmlListener {
 public:
  virtual ~HtmlListener() = default;
  /// An element begins, in this line of the text. The name is in lower case.
  virtual void Open(std::string_view name, std::span<const HtmlAttribute> attributes,
                    std::int32_t line) = 0;
  /// Some text with references resolved, which ends in this line. A run of text may come in several
  /// parts. Scripts and styles are texts as well.
  virtual void Text(std::string_view text, std::int32_t line) = 0;
  virtual void Close(std::string_view name) = 0;

 protected:
  HtmlListener() = default;
  HtmlListener(const HtmlListener&) = default;
  HtmlListener& operator=(const HtmlListener&) = default;
};

/// The deepest nesting of elements and the most attributes of a tag that are read. The parser takes
/// time in proportion to the depth for every end tag of what is not open, and in proportion to the
/// square of the attributes for a tag. Old programs leave many elements open.
inline constexpr int kMostHtmlDepth = 4096;
inline constexpr int kMostHtmlAttributes = 256;

/// Tells the listener what is in a page. The text is UTF-8, whatever charset it declares; invalid
/// bytes and control characters do no harm. Nothing is ever loaded from elsewhere. False when the
/// page is beyond the limits; the listener has then seen the part before.
bool WalkHtml(std::string_view text, HtmlListener& listener);

/// Whether a text that may be cut begins as an HTML page: after comments, an XML declaration and
/// processing instructions, with <!doctype html>, or with an element that pages begin with.
bool BeginsAsHtml(std::string_view text);

}  // namespace keltrun
