// What an event can have. A file with more ends the reading: no event has so many, and a record
// takes far more memory than its line or element.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "keltrun2/model/lap_data.h"

namespace keltrun {

/// A list, a printout or an archive comes nowhere near this size.
inline constexpr std::size_t kLargestListFile = std::size_t{64} << 20;
/// A native lap file is read without a tree of its elements: 200,000 runners of 50 legs, the most
/// that an event can have, take about 400 MB.
inline constexpr std::size_t kLargestNativeFile = std::size_t{512} << 20;

inline constexpr std::size_t kMostRunners = 200000;
inline constexpr std::size_t kMostClasses = 10000;
inline constexpr std::size_t kMostCourses = 10000;

/// Why a reader of a text stopped.
inline constexpr std::string_view kTooManyRunners = "more than 200,000 runners";
inline constexpr std::string_view kTooManyClasses = "more than 10,000 classes";

/// The highest number of controls that a file may give a class: with the finish a record is full.
inline constexpr std::int32_t kMostClassControls = clsLapData::kMostLegs - 1;

}  // namespace keltrun
