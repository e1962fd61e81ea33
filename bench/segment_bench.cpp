// Finding the runs of controls that courses share.
#include <functional>
#include <random>

#include "bench_support.h"

namespace keltrun::bench {
namespace {

using CodeOf = std::function<std::int32_t(std::int32_t position)>;

void AddCourse(clsKeltrun2& root, std::int32_t number, std::int32_t controls,
               const CodeOf& code_of) {
  const auto course = root.AddCourse(number);
  course->SetControlCount(controls);
  for (std::int32_t i = 1; i <= controls; ++i) course->SetControlNum(i, code_of(i));
  root.AddClass("class " + std::to_string(number))->CourseNum = number;
}

void MakeSegments(benchmark::State& state, clsKeltrun2& root) {
  for (auto _ : state) root.MakeSegmentSet();
  if (root.SegmentCount() == 0) state.SkipWithError("there are no segments");
  state.counters["segments"] = root.SegmentCount();
}

// Every course draws its controls from the same 100, and runs of up to 8 from the same 20 runs.
void SegmentsOfCourses(benchmark::State& state) {
  constexpr std::int32_t kControls = 40;
  std::mt19937 random(1);
  const auto draw = [&](std::uint32_t below) {
    return static_cast<std::int32_t>(random() % below);
  };
  std::vector<std::vector<std::int32_t>> runs(20);
  for (auto& run : runs) {
    for (std::int32_t left = 3 + draw(6); left > 0; --left) run.push_back(31 + draw(100));
  }
  clsKeltrun2 root;
  for (std::int32_t number = 1; number <= state.range(0); ++number) {
    std::vector<std::int32_t> codes;
    while (codes.size() < kControls) {
      const auto& run = runs[static_cast<std::size_t>(draw(20))];
      codes.insert(codes.end(), run.begin(), run.end());
      for (std::int32_t left = draw(4); left > 0; --left) codes.push_back(31 + draw(100));
    }
    AddCourse(root, number, kControls,
              [&](std::int32_t i) { return codes[static_cast<std::size_t>(i - 1)]; });
  }
  MakeSegments(state, root);
}

void SegmentsOfEqualCourses(benchmark::State& state) {
  clsKeltrun2 root;
  for (std::int32_t number = 1; number <= state.range(0); ++number) {
    AddCourse(root, number, 49, [](std::int32_t i) { return 30 + i; });
  }
  MakeSegments(state, root);
}

// A relay of 20 controls: every second one is a fork, which each team takes in its own way.
void SegmentsOfForks(benchmark::State& state) {
  clsKeltrun2 root;
  for (std::int32_t number = 1; number <= state.range(0); ++number) {
    AddCourse(root, number, 20, [&](std::int32_t i) {
      const bool other = i % 2 == 0 ? (number >> (i / 2 - 1) & 1) != 0 : i == 19 && number >= 1024;
      return 30 + i + (other ? 100 : 0);
    });
  }
  MakeSegments(state, root);
}

// The sizes are numbers of courses.
const Registration kOfCourses("SegmentsOfCourses", SegmentsOfCourses, {60});
const Registration kOfEqualCourses("SegmentsOfEqualCourses", SegmentsOfEqualCourses, {5000});
const Registration kOfForks("SegmentsOfForks", SegmentsOfForks, {2000});

}  // namespace
}  // namespace keltrun::bench
