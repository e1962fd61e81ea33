// Keltrun2: analysis of orienteering split times. A host includes this and creates a clsKeltrun2.
#pragma once

#include "keltrun2/api/keltrun2.h"
#include "keltrun2/config/startup.h"
#include "keltrun2/platform/automation_error.h"
#include "keltrun2/platform/cairo_picture.h"
#include "keltrun2/platform/host_windows.h"
#include "keltrun2/platform/printer.h"
