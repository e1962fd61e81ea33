// Where a lap file comes from.
#pragma once

#include <string>

#include "keltrun2/base/export.h"
#include "keltrun2/text/datetime.h"

namespace keltrun {

/// Which program created the lap file and which one changed it last. Readers fill it in, the writer
/// keeps it.
class KELTRUN2_API clsMetaData {
 public:
  std::string CreateApplication;      ///< Program that created the file.
  DateTime CreateDate = 0;            ///< When the file was created; 0 if unknown.
  std::string CreateUserName;         ///< User for whom the file was created.
  std::string LastUpdateApplication;  ///< Program that last changed the file.
  DateTime LastUpdateDate = 0;        ///< When the file was last changed; 0 if unknown.
  std::string LastUpdateUserName;     ///< User for whom the file was last changed.
};

}  // namespace keltrun
