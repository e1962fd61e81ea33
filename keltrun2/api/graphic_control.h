// Charts, printing and grids.
#pragma once

namespace keltrun {

/// The service that draws charts, prints lists and fills grids.
class clsGraphicControl {};

}  // namespace keltrun
