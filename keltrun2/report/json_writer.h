// Writes JSON in the form of docs/json.md.
#pragma once

#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>

#include "keltrun2/model/time_values.h"
#include "keltrun2/text/datetime.h"

namespace keltrun {

/// The words for the markers that can take the place of a time.
inline constexpr std::string_view kSkipWord = "skip";
inline constexpr std::string_view kDisqWord = "disq";

/// Appends JSON to a string and inserts the commas. The calls with a key write members of objects;
/// keys are plain ASCII and are not escaped.
class JsonWriter {
 public:
  explicit JsonWriter(std::string& out) : out_(out) {}

  void BeginObject() { Begin('{'); }
  void BeginObject(std::string_view key) { Key(key).BeginObject(); }
  void EndObject() { End('}'); }
  void BeginArray() { Begin('['); }
  void BeginArray(std::string_view key) { Key(key).BeginArray(); }
  void EndArray() { End(']'); }

  /// Whatever comes next, even a closing bracket, starts a new line.
  void NewLine() { new_line_ = true; }

  void Null() { Raw("null"); }
  void Null(std::string_view key) { Key(key).Null(); }
  void Bool(bool value) { Raw(value ? "true" : "false"); }
  void Bool(std::string_view key, bool value) { Key(key).Bool(value); }

  void Integer(std::int32_t value);
  void Integer(std::string_view key, std::int32_t value) { Key(key).Integer(value); }

  void Text(std::string_view text);
  void Text(std::string_view key, std::string_view text) { Key(key).Text(text); }

  /// Days as seconds, to the millisecond.
  void Time(DateTime days);
  void Time(std::string_view key, DateTime days) { Key(key).Time(days); }
  void TimeOrNull(std::string_view key, DateTime days) {
    if (days == 0) return Null(key);
    Time(key, days);
  }

  /// A time whose exact values 0, -1 and -2 are markers.
  void MarkedTime(DateTime days) {
    if (days == kTimeNoData) return Null();
    if (days == kTimeSkip) return Text(kSkipWord);
    if (days == kTimeDisq) return Text(kDisqWord);
    Time(days);
  }

  void Factor(double value);
  void Factor(std::string_view key, double value) { Key(key).Factor(value); }
  void FactorOrNull(std::string_view key, double value) {
    if (value == 0) return Null(key);
    Factor(key, value);
  }

  /// Null when there is no date.
  void Date(std::string_view key, DateTime value, std::string_view pattern) {
    if (value == 0 || !std::isfinite(value)) return Null(key);
    Text(key, FormatDateTime(value, pattern));
  }

 private:
  void Separate() {
    if (comma_) out_ += ',';
    if (new_line_) out_ += '\n';
    comma_ = true;
    new_line_ = false;
  }

  JsonWriter& Key(std::string_view key) {
    Separate();
    out_ += '"';
    out_ += key;
    out_ += "\":";
    comma_ = false;
    return *this;
  }

  void Begin(char bracket) {
    Separate();
    out_ += bracket;
    comma_ = false;
  }

  void End(char bracket) {
    if (new_line_) out_ += '\n';
    out_ += bracket;
    comma_ = true;
    new_line_ = false;
  }

  void Raw(std::string_view value) {
    Separate();
    out_ += value;
  }

  std::string& out_;
  bool comma_ = false;     // the next value needs a comma before it
  bool new_line_ = false;  // a line break is due
};

/// An array of what `write_number` writes for the numbers 1 to `count`: legs, controls, positions.
template <typename WriteNumber>
void WriteNumbered(JsonWriter& json, std::string_view key, std::int32_t count,
                   WriteNumber write_number) {
  json.BeginArray(key);
  for (std::int32_t number = 1; number <= count; ++number) write_number(number);
  json.EndArray();
}

}  // namespace keltrun
