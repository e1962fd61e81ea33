#include "keltrun2/config/leg_labels.h"

#include "keltrun2/config/settings.h"
#include "keltrun2/text/width.h"

namespace keltrun {
namespace {

bool IsFinishLeg(std::int32_t control_count, std::int32_t leg) { return leg == control_count + 1; }

std::string Arrow() { return ResourceText("RES_META_RIGHT_ARROW"); }
std::string StartSymbol() { return ResourceText("RES_META_START_SYMBOL"); }
std::string FinishSymbol() { return ResourceText("RES_META_FINISH_SYMBOL"); }

std::string ControlNumber(std::int32_t number) {
  const std::string text = std::to_string(number);
  return IsJapaneseMode() && number < 10 ? ToFullWidth(text) : text;
}

std::string InParentheses(std::int32_t code) { return "(" + std::to_string(code) + ")"; }

}  // namespace

std::string LegLabel(std::int32_t ControlCount, bool ShowFrom, std::int32_t LegIndex) {
  std::string from;
  if (ShowFrom) from = LegIndex == 1 ? StartSymbol() : ControlNumber(LegIndex - 1);
  return from + Arrow() +
         (IsFinishLeg(ControlCount, LegIndex) ? FinishSymbol() : ControlNumber(LegIndex));
}

std::string LegLabelWithControls(std::int32_t ControlCount, bool ShowFrom, std::int32_t LegIndex,
                                 std::int32_t FromControl, std::int32_t ToControl) {
  std::string from;
  if (ShowFrom && LegIndex != 1) from = InParentheses(FromControl);
  return from + Arrow() + (IsFinishLeg(ControlCount, LegIndex) ? "" : InParentheses(ToControl));
}

std::string LegLabelFull(std::int32_t ControlCount, bool ShowFrom, std::int32_t LegIndex,
                         std::int32_t FromControl, std::int32_t ToControl) {
  std::string from;
  if (ShowFrom) {
    from =
        LegIndex == 1 ? StartSymbol() : std::to_string(LegIndex - 1) + InParentheses(FromControl);
  }
  const std::string to = IsFinishLeg(ControlCount, LegIndex)
                             ? FinishSymbol()
                             : std::to_string(LegIndex) + InParentheses(ToControl);
  return from + Arrow() + to;
}

}  // namespace keltrun
