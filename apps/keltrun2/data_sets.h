// Which classes, courses and segments a command works on.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "apps/keltrun2/options.h"
#include "keltrun2/keltrun2.h"

namespace keltrun::cli {

/// A class, a course, or a segment that courses share.
struct ChosenSet {
  DataSetKind kind = DataSetKind::kClass;
  std::int32_t number = 0;  // position of the class, or number of the course
  std::shared_ptr<clsSegmentData> segment;
};

/// True when the user named one set.
bool NamesOneSet(const Options& options);

/// The set that the user named, otherwise all classes and shared courses of the event. For an
/// unknown name it throws CommandError with the names that there are.
std::vector<ChosenSet> ChosenSets(const clsKeltrun2& root, const Options& options);

/// The set that the user named, otherwise all classes, so that each runner is in one list only.
std::vector<ChosenSet> NamedSetOrClasses(const clsKeltrun2& root, const Options& options);

/// The single set of a page. Throws CommandError when the user named none and there are several.
ChosenSet OneSet(const clsKeltrun2& root, const Options& options);

/// The course of a class or course; null for a segment, and when the event does not have the
/// course.
std::shared_ptr<clsCourseData> CourseOf(const clsKeltrun2& root, const ChosenSet& choice);

/// Lets outputs show the course's control codes. Nothing for a course of fewer controls than the
/// set has, because some of these would have no code.
void AddControlCodes(clsAnalyzer& analyzer, std::shared_ptr<clsCourseData> course);

/// The analysis of a set, executed, without the untimed legs that the options name.
std::shared_ptr<clsAnalyzer> Analysis(const clsKeltrun2& root, const ChosenSet& choice,
                                      const Options& options);

/// The analyses of all runners of the sets, executed. Runners who had another course than their
/// class are analyzed with those of the class who had it too.
std::vector<clsTextControl::AnalysisSet> AnalysesOfAll(const clsKeltrun2& root,
                                                       const std::vector<ChosenSet>& choices,
                                                       const Options& options);

/// The result list of a set with its ranks.
std::shared_ptr<clsResultsHolder> ResultList(const clsKeltrun2& root, const ChosenSet& choice);

}  // namespace keltrun::cli
