// Who made a lap file.
#pragma once

#include <string>

#include "keltrun2/base/export.h"
#include "keltrun2/text/datetime.h"

namespace keltrun {

/// Which program created and last changed the lap file; filled by readers, kept by the writer.
class KELTRUN2_API clsMetaData {
 public:
  std::string CreateApplication;      ///< Program that created the file.
  DateTime CreateDate = 0;            ///< When the file was created; 0 when unknown.
  std::string CreateUserName;         ///< User for whom the file was created.
  std::string LastUpdateApplication;  ///< Program that changed the file last.
  DateTime LastUpdateDate = 0;        ///< When the file was changed last; 0 when unknown.
  std::string LastUpdateUserName;     ///< User for whom the file was changed last.
};

}  // namespace keltrun
