#include "keltrun2/report/estimate_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string_view>
#include <vector>

#include "keltrun2/config/leg_labels.h"
#include "keltrun2/config/settings.h"
#include "keltrun2/model/lap_data_internal.h"
#include "keltrun2/model/time_text.h"
#include "keltrun2/text/cells.h"
#include "keltrun2/text/datetime.h"
#include "keltrun2/text/split.h"

namespace keltrun {
namespace {

constexpr std::size_t kMostLegsInText = 12;  // so that a runner fits on a screen
constexpr std::string_view kIndent = "  ";
constexpr double kNothing = 0.5 / kSecondsPerDay;  // shown as 0:00

std::string Label(const clsEstimatedRunnerData& runner, std::int32_t leg) {
  return LegLabel(runner.LegCount() - 1, true, leg);
}

DateTime LapOf(const clsEstimatedRunnerData& runner, std::int32_t leg) {
  return LapDataInternal::Lap(*runner.OtherData(), leg);
}

std::string Duration(DateTime days) {
  return CompactTime(std::round(days * kSecondsPerDay) / kSecondsPerDay);
}

std::string Whole(double number) { return std::to_string(std::llround(number)); }

// The text of a resource with the values in the places of "%1", "%2" and so on.
std::string Sentence(std::string_view key, const std::vector<std::string>& values = {}) {
  std::string text = ResourceText(key);
  for (std::size_t i = values.size(); i > 0; --i) {
    text = CclsSplit("%" + std::to_string(i), text).Expression(values[i - 1]);
  }
  return text;
}

// Writes what is said about one runner.
class RunnerText {
 public:
  RunnerText(std::string& out, const clsEstimatedClassData& klass,
             const clsEstimatedRunnerData& runner)
      : out_(out), klass_(klass), runner_(runner) {}

  void Append() {
    AppendTitle();
    CollectLegs();
    if (known_legs_ == 0) {
      AppendSentence(Sentence("RES_ESTIMATE_NOTHING"));
    } else {
      AppendSpeed();
      AppendMistakes();
      AppendLegs();
      AppendRest();
    }
    out_ += kCrLf;
  }

 private:
  void AppendTitle() {
    const clsLapData& record = *runner_.OtherData();
    std::string title = klass_.ClassName();
    for (const std::string& part :
         {record.Rank, record.RunnerName, record.ClubName, record.Result()}) {
      if (!part.empty()) title += "  " + part;
    }
    out_ += "* ";
    AppendInLine(out_, title);
    out_ += kCrLf;
  }

  void AppendSentence(const std::string& text) {
    out_ += kIndent;
    out_ += text;
    out_ += kCrLf;
  }

  // The legs to tell about, the most costly first.
  void CollectLegs() {
    for (std::int32_t leg = 1; leg <= runner_.LegCount(); ++leg) {
      if (runner_.IsKnown(leg)) {
        ++known_legs_;
        if (runner_.MistakeWord(leg) != MistakeWord::kNone) legs_.push_back(leg);
      } else if (runner_.IsTimed(leg) && LapOf(runner_, leg) > 0) {
        AppendLabel(unknown_, leg);
      }
      if (!runner_.IsTimed(leg)) AppendLabel(untimed_, leg);
    }
    std::stable_sort(legs_.begin(), legs_.end(), [this](std::int32_t a, std::int32_t b) {
      return runner_.MistakeTime(a) > runner_.MistakeTime(b);
    });
    legs_.resize(std::min(legs_.size(), kMostLegsInText));
  }

  void AppendLabel(std::string& list, std::int32_t leg) const {
    list += (list.empty() ? "" : ", ") + Label(runner_, leg);
  }

  void AppendSpeed() {
    const double percent = 100 * (runner_.Speed() - 1);
    const std::string number = Whole(std::fabs(percent));
    AppendSentence(number == "0" ? Sentence("RES_ESTIMATE_SPEED_EQUAL")
                                 : Sentence(percent > 0 ? "RES_ESTIMATE_SPEED_SLOWER"
                                                        : "RES_ESTIMATE_SPEED_FASTER",
                                            {number}));
    AppendSentence(Sentence("RES_ESTIMATE_SPREAD", {Whole(100 * runner_.Spread())}));
  }

  void AppendMistakes() {
    const std::int32_t count = runner_.MistakeCount();
    const std::string_view key = count == 0   ? "RES_ESTIMATE_NO_MISTAKE"
                                 : count == 1 ? "RES_ESTIMATE_ONE_MISTAKE"
                                              : "RES_ESTIMATE_MISTAKES";
    AppendSentence(Sentence(key, {std::to_string(count), Duration(runner_.MistakeSize() * count)}));
  }

  void AppendLegs() {
    constexpr std::array<std::string_view, 4> kKeys = {
        "", "RES_ESTIMATE_LEG_PERHAPS", "RES_ESTIMATE_LEG_LIKELY", "RES_ESTIMATE_LEG_SURE"};
    for (const std::int32_t leg : legs_) {
      out_ += kIndent;
      AppendSentence(
          Sentence(kKeys[static_cast<std::size_t>(runner_.MistakeWord(leg))],
                   {Label(runner_, leg), Duration(LapOf(runner_, leg)),
                    Duration(runner_.NormalTime(leg)), Duration(runner_.MistakeTime(leg))}));
    }
  }

  // What the legs above do not tell.
  void AppendRest() {
    DateTime rest = runner_.TimeLost();
    for (const std::int32_t leg : legs_) rest -= runner_.MistakeTime(leg);
    if (rest >= kNothing) AppendSentence(Sentence("RES_ESTIMATE_REST", {Duration(rest)}));
    if (runner_.LargestTimeLost() >= kNothing) {
      AppendSentence(Sentence("RES_ESTIMATE_TOTAL",
                              {Duration(runner_.TimeLost()), Duration(runner_.LeastTimeLost()),
                               Duration(runner_.LargestTimeLost())}));
    }
    if (!unknown_.empty()) AppendSentence(Sentence("RES_ESTIMATE_UNKNOWN", {unknown_}));
    if (!untimed_.empty()) AppendSentence(Sentence("RES_ESTIMATE_UNTIMED", {untimed_}));
  }

  std::string& out_;
  const clsEstimatedClassData& klass_;
  const clsEstimatedRunnerData& runner_;
  std::int32_t known_legs_ = 0;
  std::vector<std::int32_t> legs_;
  std::string unknown_, untimed_;
};

// A number with at most `decimals` decimals, the same everywhere in the world.
std::string Decimal(double number, int decimals) {
  std::array<char, 340> buffer;
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number,
                                 std::chars_format::fixed, decimals);
  return {buffer.data(), end.ptr};
}

// To a tenth; never "-0.0".
std::string Seconds(DateTime days) {
  const double tenths = std::round(days * kSecondsPerDay * 10);
  return Decimal(tenths == 0 ? 0 : tenths / 10, 1);
}

// A cell of RFC 4180: in quotes where it has to be.
void AppendQuoted(std::string& out, std::string_view text) {
  if (text.find_first_of(",\"\r\n") == std::string_view::npos) {
    out += text;
    return;
  }
  out += '"';
  for (const char c : text) {
    if (c == '"') out += '"';
    out += c;
  }
  out += '"';
}

// The cells of a lap in the order of the columns; those of figures are empty where there are none.
std::vector<std::string> Cells(const clsEstimatedClassData& klass,
                               const clsEstimatedRunnerData& runner, std::int32_t leg) {
  const clsLapData& record = *runner.OtherData();
  std::vector<std::string> cells = {klass.ClassName(),
                                    std::to_string(record.SerialNum()),
                                    record.RunnerName,
                                    record.ClubName,
                                    std::to_string(leg),
                                    Label(runner, leg),
                                    runner.IsTimed(leg) ? "1" : "0",
                                    Seconds(LapOf(runner, leg))};
  if (!runner.IsKnown(leg)) {
    cells.resize(cells.size() + 7);
    return cells;
  }
  for (const DateTime time : {runner.NormalTime(leg), runner.Loss(leg), runner.LeastLoss(leg),
                              runner.LargestLoss(leg), runner.MistakeTime(leg)}) {
    cells.push_back(Seconds(time));
  }
  cells.push_back(Decimal(runner.MistakeChance(leg), 3));
  cells.emplace_back(MistakeWordName(runner.MistakeWord(leg)));
  return cells;
}

}  // namespace

void AppendEstimateText(std::string& out, const clsEstimatedClassData& klass) {
  for (std::int32_t i = 1; i <= klass.Count(); ++i) {
    RunnerText(out, klass, *klass.Item(i)).Append();
  }
}

void AppendEstimateCsvHead(std::string& out) {
  out +=
      "class,serial,name,club,leg,label,timed,lap,normal,loss,leastLoss,largestLoss,mistakeTime,"
      "mistakeChance,mistake";
  out += kCrLf;
}

void AppendEstimateCsv(std::string& out, const clsEstimatedClassData& klass) {
  for (std::int32_t i = 1; i <= klass.Count(); ++i) {
    const auto runner = klass.Item(i);
    for (std::int32_t leg = 1; leg <= runner->LegCount(); ++leg) {
      if (!(LapOf(*runner, leg) > 0)) continue;
      std::string_view separator;
      for (const std::string& cell : Cells(klass, *runner, leg)) {
        out += separator;
        AppendQuoted(out, cell);
        separator = ",";
      }
      out += kCrLf;
    }
  }
}

}  // namespace keltrun
