// The host's own settings.
#pragma once

namespace keltrun {

/// The service through which a host keeps settings of its own between runs.
class clsConfigControl {};

}  // namespace keltrun
