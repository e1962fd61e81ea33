// Who made a lap file.
#pragma once

#include <string>

#include "keltrun2/platform/export.h"
#include "keltrun2/text/datetime.h"

namespace keltrun {

/// Which program created and last changed the lap file; filled by readers, kept by the writer.
class KELTRUN2_API clsMetaData {
 public:
  std::string CreateApplication;      // program that created the file
  DateTime CreateDate = 0;            // when, 0 = unknown
  std::string CreateUserName;         // for whom
  std::string LastUpdateApplication;  // program that changed it last
  DateTime LastUpdateDate = 0;        // when, 0 = unknown
  std::string LastUpdateUserName;     // for whom
};

}  // namespace keltrun
