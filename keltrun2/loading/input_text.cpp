#include "keltrun2/loading/input_text.h"

#include <algorithm>
#include <utility>

#include "keltrun2/codec/list_encoding.h"
#include "keltrun2/codec/markup_encoding.h"
#include "keltrun2/io/text_reading.h"

namespace keltrun {
namespace {

void Note(InputText& input, std::int32_t line, std::string remark) {
  input.remarks.push_back({line, 0, RemarkSeverity::kNote, std::move(remark), ""});
}

void NoteBlanks(std::size_t count, InputText& input) {
  if (count == 0) return;
  Note(input, 0, "control characters: " + std::to_string(count) + " read as blanks");
}

// A note on the first place that the charset does not allow.
void NoteInvalid(const Decoded& content, std::string_view charset, InputText& input) {
  if (content.FirstInvalid == std::string::npos) return;
  const std::string_view before = std::string_view(content.Text).substr(0, content.FirstInvalid);
  const auto line = std::count(before.begin(), before.end(), '\n') + 1;
  Note(input, static_cast<std::int32_t>(line),
       "encoding: from here on, bytes that are not " + std::string(charset) +
           " are shown as U+FFFD");
}

constexpr std::string_view kNameAnother =
    "; clsFileControl.InputCharset or --input-charset names another";

// Decodes an XML document or a web page.
InputText DecodeMarkupText(std::string_view bytes, std::optional<Charset> asked_for) {
  MarkupText markup = DecodeMarkup(bytes, asked_for);
  InputText input;
  NoteBlanks(markup.Blanked, input);
  if (markup.Contradicted) {
    Note(input, 0,
         "encoding: the file says " + markup.Declared + ", but its bytes are " + markup.Used +
             " and are read so" + std::string(kNameAnother));
  } else if (markup.Assumed) {
    Note(input, 0,
         "encoding: the file does not say one; read as " + markup.Used + std::string(kNameAnother));
  }
  NoteInvalid(markup.Content, markup.Used, input);
  input.text = std::move(markup.Content.Text);
  return input;
}

// Whether bytes begin with a tag or a declaration, in any charset.
bool IsMarkup(std::string_view bytes) {
  constexpr std::string_view kBefore("\xEF\xBB\xBF\xFF\xFE\0 \t\r\n", 10);
  const std::size_t begin = bytes.find_first_not_of(kBefore);
  return begin != std::string_view::npos && bytes[begin] == '<';
}

}  // namespace

InputText HostText(std::string text) {
  InputText input{std::move(text), {}};
  NoteBlanks(BlankControlCharacters(input.text), input);
  return input;
}

InputText DecodeText(std::string_view bytes, std::optional<Charset> asked_for) {
  ListText list = DecodeList(bytes, asked_for);
  InputText input;
  NoteBlanks(BlankControlCharacters(list.Content.Text), input);
  const std::string name(CharsetTitle(list.Used));
  if (list.Assumed) {
    const char* reason = list.Used == Charset::kShiftJis ? "Japanese with damaged bytes"
                                                         : "neither UTF-8 nor Shift-JIS";
    Note(input, 0,
         "encoding: " + std::string(reason) + ", read as " + name + std::string(kNameAnother));
  }
  NoteInvalid(list.Content, name, input);
  input.text = std::move(list.Content.Text);
  return input;
}

InputText DecodeForeignText(std::string_view bytes, std::optional<Charset> asked_for) {
  return IsMarkup(bytes) ? DecodeMarkupText(bytes, asked_for) : DecodeText(bytes, asked_for);
}

}  // namespace keltrun
