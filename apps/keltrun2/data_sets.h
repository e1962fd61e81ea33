// Which classes and courses a command works on.
#pragma once

#include <vector>

#include "apps/keltrun2/options.h"
#include "keltrun2/keltrun2.h"

namespace keltrun::cli {

/// True when the user named a class or a course.
bool NamesOneSet(const Options& options);

/// The class or course that the user named, otherwise all that the event offers. Throws
/// CommandError with the names there are for an unknown one.
std::vector<ClassAndCourseValue> ChosenSets(const clsKeltrun2& root, const Options& options);

/// The one set of a page. Throws CommandError when the user named none and there are several.
ClassAndCourseValue OneSet(const clsKeltrun2& root, const Options& options);

/// Whether the choice is a class or a course.
DataSetKind KindOf(const ClassAndCourseValue& choice);

/// Puts the runners of the choice into an empty data set.
void Fill(DataSet& set, const ClassAndCourseValue& choice);

}  // namespace keltrun::cli
