// The mark of public classes and functions. The shared library hides everything without it.
#pragma once

/// Marks a class or function that the shared library exports to hosts.
#define KELTRUN2_API [[gnu::visibility("default")]]
