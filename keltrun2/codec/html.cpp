#include "keltrun2/codec/html.h"

#include <libxml/HTMLparser.h>
#include <libxml/parserInternals.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <exception>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "keltrun2/codec/encodings.h"
#include "keltrun2/codec/utf8.h"

namespace keltrun {
namespace {

constexpr std::string_view kBlanks = " \t\r\n\f";

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f'; }
bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool IsUnwanted(char c) { return static_cast<unsigned char>(c) < 0x20 && !IsBlank(c); }

std::string_view View(const xmlChar* text) {
  return text == nullptr ? std::string_view() : reinterpret_cast<const char*>(text);
}

std::size_t SkipBlanks(std::string_view text, std::size_t pos) {
  return std::min(text.find_first_not_of(kBlanks, pos), text.size());
}

// Looks for tags with too many attributes. Any "<" before a letter may begin a tag, even inside of
// what looks like another tag, so the tags that are looked at overlap. What a search found is kept:
// a later search that begins before that place finds the same, so no part is searched twice.
class AttributeCheck {
 public:
  explicit AttributeCheck(std::string_view text) : text_(text) {}

  bool HasTooMany() {
    for (std::size_t pos = text_.find('<'); pos < text_.size(); pos = text_.find('<', pos + 1)) {
      if (pos + 1 < text_.size() && IsLetter(text_[pos + 1]) && IsTooLong(pos + 1)) return true;
    }
    return false;
  }

 private:
  struct Search {
    std::string_view characters;  // what ends it
    std::size_t from = 1, found = 0;
  };

  // The first of the characters of the search, or the end of the text.
  std::size_t Find(Search& search, std::size_t pos) {
    if (pos < search.from || pos > search.found) {
      search.from = pos;
      search.found = std::min(text_.find_first_of(search.characters, pos), text_.size());
    }
    return search.found;
  }

  std::size_t Skip(std::size_t pos) {
    if (pos < blanks_.from || pos > blanks_.found) {
      blanks_.from = pos;
      blanks_.found = SkipBlanks(text_, pos);
    }
    return blanks_.found;
  }

  // Whether the tag whose name begins here has too many attributes. Quotation marks enclose values
  // only after an equals sign.
  bool IsTooLong(std::size_t pos) {
    int words = -1;  // without the name
    for (; pos < text_.size() && text_[pos] != '>'; pos = Skip(pos)) {
      if (text_[pos] != '=') {
        if (++words > kMostHtmlAttributes) return true;
        pos = Find(word_, pos + 1);
        continue;
      }
      pos = Skip(pos + 1);
      if (pos == text_.size()) break;
      if (text_[pos] == '"') {
        pos = Find(double_quote_, pos + 1) + 1;
      } else if (text_[pos] == '\'') {
        pos = Find(single_quote_, pos + 1) + 1;
      } else {
        pos = Find(value_, pos);
      }
    }
    return false;
  }

  std::string_view text_;
  Search blanks_;
  Search word_{" \t\r\n\f=>"}, value_{" \t\r\n\f>"}, double_quote_{"\""}, single_quote_{"'"};
};

// One run of the parser. Exceptions of the listener do not pass through the parser, which would
// lose its memory: they wait until it has ended.
class Walk {
 public:
  explicit Walk(HtmlListener& listener) : listener_(listener) {}

  bool Run(std::string_view text) {
    most_steps_ = kFreeSteps + kStepsPerByte * text.size();
    const std::unique_ptr<htmlParserCtxt, void (*)(htmlParserCtxtPtr)> parser(htmlNewParserCtxt(),
                                                                              htmlFreeParserCtxt);
    if (parser == nullptr) throw std::bad_alloc();
    parser_ = parser.get();
    parser_->_private = this;
    *parser_->sax = Callbacks();
    htmlCtxtReadMemory(parser_, text.data(), static_cast<int>(text.size()), nullptr, "UTF-8",
                       HTML_PARSE_RECOVER | HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING |
                           HTML_PARSE_NONET | HTML_PARSE_NOIMPLIED | HTML_PARSE_IGNORE_ENC);
    Call([&] {
      FlushAmpersand();
      while (!open_.empty()) CloseLast();
    });
    if (thrown_) std::rethrow_exception(thrown_);
    return !stopped_;
  }

 private:
  // Only these events are asked for, so no tree is made, and nothing is printed.
  static htmlSAXHandler Callbacks() {
    htmlSAXHandler callbacks{};
    callbacks.startElement = [](void* parser, const xmlChar* name, const xmlChar** attributes) {
      Of(parser).Open(View(name), attributes);
    };
    callbacks.endElement = [](void* parser, const xmlChar* name) { Of(parser).Close(View(name)); };
    callbacks.characters = OnText;
    callbacks.ignorableWhitespace = OnText;
    callbacks.cdataBlock = OnText;
    callbacks.initialized = XML_SAX2_MAGIC;  // there is a handler of errors
    callbacks.serror = [](void* parser, auto error) { Of(parser).OnError(error->code); };
    return callbacks;
  }

  static void OnText(void* parser, const xmlChar* text, int size) {
    Of(parser).Text({reinterpret_cast<const char*>(text), static_cast<std::size_t>(size)});
  }

  static Walk& Of(void* parser) {
    return *static_cast<Walk*>(static_cast<htmlParserCtxtPtr>(parser)->_private);
  }

  // Calls a function unless the walk was stopped.
  template <typename Function>
  void Call(Function function) {
    if (stopped_) return;
    try {
      function();
    } catch (...) {
      thrown_ = std::current_exception();
      Stop();
    }
  }

  void Stop() {
    stopped_ = true;
    xmlStopParser(parser_);
  }

  // For the end tag of what is not open the parser looks at all that is.
  void OnError(int code) {
    if (code != XML_ERR_TAG_NAME_MISMATCH) return;
    steps_ += open_.size();
    if (steps_ > most_steps_ && !stopped_) Stop();
  }

  void Open(std::string_view name, const xmlChar** attributes) {
    Call([&] {
      FlushAmpersand();
      if (open_.size() == static_cast<std::size_t>(kMostHtmlDepth)) return Stop();
      open_.emplace_back(name);
      attributes_.clear();
      for (; attributes != nullptr && *attributes != nullptr; attributes += 2) {
        attributes_.push_back({View(attributes[0]), View(attributes[1])});
      }
      listener_.Open(name, attributes_, Line());
    });
  }

  void Close(std::string_view name) {
    Call([&] {
      FlushAmpersand();
      // The parser tells no end of an element whose tag is cut.
      if (std::find(open_.rbegin(), open_.rend(), name) == open_.rend()) return;
      while (open_.back() != name) CloseLast();
      CloseLast();
    });
  }

  void CloseLast() {
    const std::string name = std::move(open_.back());
    open_.pop_back();
    listener_.Close(name);
  }

  // "&nbsp" without a semicolon, which old programs write, comes as the texts "&" and "nbsp".
  void Text(std::string_view text) {
    Call([&] {
      if (ampersand_ && text == "nbsp") {
        ampersand_ = false;
        return listener_.Text("\u00A0", Line());
      }
      FlushAmpersand();
      if (text == "&") {
        ampersand_ = true;
      } else {
        listener_.Text(text, Line());
      }
    });
  }

  void FlushAmpersand() {
    if (!ampersand_) return;
    ampersand_ = false;
    listener_.Text("&", Line());
  }

  std::int32_t Line() const { return parser_->input == nullptr ? 0 : parser_->input->line; }

  static constexpr std::size_t kFreeSteps = 1000000;
  static constexpr std::size_t kStepsPerByte = 4;

  HtmlListener& listener_;
  htmlParserCtxtPtr parser_ = nullptr;
  std::vector<HtmlAttribute> attributes_;
  std::vector<std::string> open_;  // the names of the open elements
  std::size_t steps_ = 0, most_steps_ = 0;
  bool ampersand_ = false;  // a text "&" has not been told yet
  bool stopped_ = false;
  std::exception_ptr thrown_;
};

// Moves past what may stand before the first element: blanks, comments, and <?...?>.
std::string_view SkipProlog(std::string_view text) {
  while (true) {
    text.remove_prefix(SkipBlanks(text, 0));
    std::string_view end;
    if (text.starts_with("<!--")) end = "-->";
    if (text.starts_with("<?")) end = ">";
    if (end.empty()) return text;
    const std::size_t found = text.find(end);
    if (found == std::string_view::npos) return {};
    text.remove_prefix(found + end.size());
  }
}

}  // namespace

bool WalkHtml(std::string_view text, HtmlListener& listener) {
  if (text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) return false;
  if (AttributeCheck(text).HasTooMany()) return false;
  Walk walk(listener);
  const bool unwanted = std::any_of(text.begin(), text.end(), IsUnwanted);
  if (!unwanted && FindInvalidUtf8(text) == std::string_view::npos) return walk.Run(text);
  // The parser would take such a text for one in another charset, or for a shorter one.
  std::string clean = ValidUtf8(text);
  std::replace_if(clean.begin(), clean.end(), IsUnwanted, ' ');
  return walk.Run(clean);
}

bool BeginsAsHtml(std::string_view text) {
  text = SkipProlog(text);
  if (!text.starts_with('<')) return false;
  text.remove_prefix(1);
  constexpr std::string_view kDocumentType = "!doctype";
  if (EqualsIgnoringCase(text.substr(0, kDocumentType.size()), kDocumentType)) {
    text.remove_prefix(kDocumentType.size());
    text.remove_prefix(SkipBlanks(text, 0));
  }
  const std::string_view name = text.substr(0, text.find_first_of(" \t\r\n\f/>"));
  constexpr std::array kNames = {"html", "head",   "body", "title", "meta", "table",
                                 "pre",  "div",    "p",    "h1",    "h2",   "h3",
                                 "h4",   "center", "font", "style"};
  return std::any_of(kNames.begin(), kNames.end(),
                     [&](std::string_view known) { return EqualsIgnoringCase(name, known); });
}

}  // namespace keltrun
