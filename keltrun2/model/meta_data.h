// Who made a lap file.
#pragma once

#include <string>

#include "keltrun2/text/datetime.h"

namespace keltrun {

/// Which program created and last changed the lap file; filled by readers, kept by the writer.
class clsMetaData {
 public:
  std::string CreateApplication;
  DateTime CreateDate = 0;
  std::string CreateUserName;
  std::string LastUpdateApplication;
  DateTime LastUpdateDate = 0;
  std::string LastUpdateUserName;
};

}  // namespace keltrun
