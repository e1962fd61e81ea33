// The limits of an event. Reading a file stops at these: no event is that large, and a record takes
// far more memory than its line or element.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "keltrun2/model/lap_data.h"

namespace keltrun {

/// No list, printout or archive comes near this size.
inline constexpr std::size_t kLargestListFile = std::size_t{64} << 20;
/// A native lap file is read without building a tree of its elements. 200,000 runners with 50 legs
/// each, the maximum of an event, take about 400 MB.
inline constexpr std::size_t kLargestNativeFile = std::size_t{512} << 20;

inline constexpr std::size_t kMostRunners = 200000;
inline constexpr std::size_t kMostClasses = 10000;
inline constexpr std::size_t kMostCourses = 10000;

/// The errors of text readers at these limits.
inline constexpr std::string_view kTooManyRunners = "more than 200,000 runners";
inline constexpr std::string_view kTooManyClasses = "more than 10,000 classes";

/// The maximum number of controls that a file can give a class: with the finish, a record is full.
inline constexpr std::int32_t kMostClassControls = clsLapData::kMostLegs - 1;

}  // namespace keltrun
