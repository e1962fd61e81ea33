// Keltrun2: analysis of orienteering split times. A host includes this header and creates a
// clsKeltrun2.
#pragma once

#include "keltrun2/api/keltrun2.h"
#include "keltrun2/base/automation_error.h"
#include "keltrun2/config/startup.h"
#include "keltrun2/drawing/cairo_picture.h"
#include "keltrun2/os/host_windows.h"
#include "keltrun2/printing/printer.h"
