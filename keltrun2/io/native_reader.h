// The native lap file, from bytes to records.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "keltrun2/codec/xml.h"
#include "keltrun2/io/remarks.h"
#include "keltrun2/model/class_data.h"
#include "keltrun2/model/course_data.h"
#include "keltrun2/model/event_data.h"
#include "keltrun2/model/meta_data.h"

namespace keltrun {

/// Where an element begins, for remarks; lines and columns count from 1.
struct ElementPlace {
  std::int32_t line = 0;
  std::int32_t column = 0;
};

/// A class element: its attributes, as a class without runners, and its runners.
struct NativeClass {
  std::shared_ptr<clsClassData> klass;
  std::vector<std::shared_ptr<clsLapData>> runners;
  ElementPlace place;
};

struct NativeCourse {
  std::shared_ptr<clsCourseData> course;
  ElementPlace place;
};

/// Everything that a native lap file contains, in the order of the file.
struct NativeLapFile {
  std::optional<DateTime> file_date;
  clsEventData event;
  clsMetaData meta;
  std::vector<NativeClass> classes;
  std::vector<NativeCourse> courses;
};

struct NativeReadResult {
  NativeLapFile file;
  std::vector<LoadRemark> remarks;
  std::optional<XmlError> error;  // if set, `file` is empty
};

/// Where the document comes from. The bytes of a file say their encoding; a text is UTF-8.
enum class NativeSource { kFileBytes, kText };

/// Reads a native lap file. Unknown elements and attributes are ignored, and missing ones leave the
/// defaults. Of an invalid number the leading digits are used, or 0. Control counts are limited to
/// 0 to 49 for a class and 0 to 50 for a course. A leg or control whose index is missing or outside
/// 1 to 50 is dropped. Every invalid value gives a remark with the place of its element.
///
/// An error means that the document is not XML, that its root element is not "keltrun", or that it
/// has more than 200,000 runners, 10,000 classes or 10,000 courses.
NativeReadResult ReadNativeLapFile(std::string_view bytes, NativeSource kind);

}  // namespace keltrun
