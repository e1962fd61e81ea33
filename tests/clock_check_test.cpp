// Control stations whose clock went wrong, in simulated events.
#include "keltrun2/analysis/clock_check.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tests/test_support.h"

namespace keltrun::test {
namespace {

constexpr std::int32_t kCode = 45;
constexpr std::int32_t kControls = 8;
constexpr double kFirstStart = 10 * 3600;
constexpr double kStartInterval = 120;

// How far a clock is ahead at a time of day, in seconds.
using ClockError = std::function<double(double)>;

double Uniform(std::mt19937& bits) { return (static_cast<double>(bits()) + 0.5) / 4294967296.0; }

double Normal(std::mt19937& bits) {
  double sum = -6;
  for (int i = 0; i < 12; ++i) sum += Uniform(bits);
  return sum;
}

// Two classes on courses that share one control, with the error of its clock. Laps vary by 8
// percent, and one in seven has a mistake.
std::shared_ptr<clsKeltrun2> EventWithClock(std::uint32_t seed, int runners,
                                            const ClockError& error) {
  std::mt19937 bits(seed);
  auto root = NewRoot();
  for (const std::int32_t number : {1, 2}) {
    const auto course = root->AddCourse(number);
    course->SetControlCount(kControls);
    for (std::int32_t i = 1; i <= kControls; ++i) course->SetControlNum(i, 100 * number + i);
    course->SetControlNum(number + 2, kCode);
    const auto klass = root->AddClass("Class" + std::to_string(number));
    klass->CourseNum = number;
    klass->ControlCount = kControls;
    std::vector<double> legs;
    for (int leg = 0; leg <= kControls; ++leg) legs.push_back(90 + 150 * Uniform(bits));
    for (int i = 0; i < runners; ++i) {
      const double start = kFirstStart + kStartInterval * i;
      const double speed = std::exp(0.12 * Normal(bits));
      double time = start;
      double punch = start;  // by the clocks
      std::vector<double> laps;
      for (std::int32_t leg = 1; leg <= kControls + 1; ++leg) {
        const double mistake = Uniform(bits) < 0.15 ? -0.3 * std::log(Uniform(bits)) : 0;
        time += legs[static_cast<std::size_t>(leg) - 1] * speed *
                std::exp(0.08 * Normal(bits) + mistake);
        const bool is_wrong = leg <= kControls && course->ControlNum(leg) == kCode;
        const double next = std::round(time + (is_wrong ? error(time) : 0));
        laps.push_back(next - punch);
        punch = next;
      }
      AddRunner(*klass, "R", "", laps)->StartTime()->SetValue(Seconds(start));
    }
  }
  return root;
}

std::vector<std::string> ClockRemarks(const clsKeltrun2& root) {
  std::vector<std::string> found;
  for (const std::string& remark : root.EventRemarks()) {
    if (remark.find("clock") != std::string::npos) found.push_back(remark);
  }
  return found;
}

bool Has(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST(Clocks, ThatDriftOrJumpAreNamedWithTheEvidence) {
  constexpr int kRunners = 60;
  const double day = kRunners * kStartInterval;
  const auto drift = [&](double time) { return 90 * (time - kFirstStart) / day; };
  const auto jump = [&](double time) { return time > kFirstStart + 0.6 * day ? -60.0 : 0.0; };
  for (std::uint32_t seed = 1; seed <= 5; ++seed) {
    const auto drifts = ClockRemarks(*EventWithClock(seed, kRunners, drift));
    ASSERT_EQ(drifts.size(), 1U) << seed;
    EXPECT_TRUE(Has(drifts[0], "control 45 seems to")) << drifts[0];
    EXPECT_TRUE(Has(drifts[0], "by +")) << drifts[0];
    EXPECT_TRUE(Has(drifts[0], " runners, ")) << drifts[0];
    const auto jumps = ClockRemarks(*EventWithClock(seed, kRunners, jump));
    ASSERT_EQ(jumps.size(), 1U) << seed;
    EXPECT_TRUE(Has(jumps[0], "control 45 seems to jump by -")) << jumps[0];
    EXPECT_TRUE(Has(jumps[0], "at about 11:") || Has(jumps[0], "at about 10:")) << jumps[0];
  }
}

TEST(Clocks, ThatCannotBeToldAreNot) {
  const auto right = [](double) { return 0.0; };
  const auto same_for_all = [](double) { return 60.0; };
  const auto drift = [](double time) { return (time - kFirstStart) / 60; };
  for (std::uint32_t seed = 1; seed <= 20; ++seed) {
    EXPECT_TRUE(ClockRemarks(*EventWithClock(seed, 60, right)).empty()) << seed;
    EXPECT_TRUE(ClockRemarks(*EventWithClock(seed, 60, same_for_all)).empty()) << seed;
    EXPECT_TRUE(ClockRemarks(*EventWithClock(seed, 25, drift)).empty()) << "too few runners";
  }
}

TEST(Clocks, AreCorrectedOnlyWhenAsked) {
  const auto root = NewRoot();
  const auto course = root->AddCourse(1);
  course->SetControlCount(2);
  course->SetControlNum(1, kCode);
  course->SetControlNum(2, 46);
  const auto klass = root->AddClass("M");
  klass->CourseNum = 1;
  klass->ControlCount = 2;
  const auto runner = AddRunner(*klass, "A", "", {60, 100, 50});
  const auto skipped = AddRunner(*klass, "B", "", {60, -1, 150});
  const auto short_lap = AddRunner(*klass, "C", "", {60, 30, 50});
  EXPECT_EQ(root->ShiftClock(kCode, 40), 1);
  EXPECT_EQ(LapsOf(*runner), (std::vector<long>{100, 60, 50}));
  EXPECT_EQ(LapsOf(*skipped), (std::vector<long>{60, -1, 150}));
  EXPECT_EQ(LapsOf(*short_lap), (std::vector<long>{60, 30, 50}));
  EXPECT_EQ(root->ShiftClock(99, 40), 0);
  const auto remarks = root->EventRemarks();
  ASSERT_EQ(remarks.size(), 2U);
  EXPECT_EQ(remarks[0], "the clock of control 45 was corrected by +40 s for 1 runner");
  EXPECT_TRUE(Has(root->TextControl()->OutputInfoJson(), R"("corrections":["the clock of)"));
  EXPECT_THROW(root->ShiftClock(kCode, 86400), AutomationError);
  EXPECT_THROW(root->ShiftClock(kCode, std::nan("")), AutomationError);
  root->Clear();
  EXPECT_FALSE(Has(root->TextControl()->OutputInfoJson(), "corrections"));
}

}  // namespace
}  // namespace keltrun::test
