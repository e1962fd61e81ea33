// What the shared library shows to hosts: the public classes and functions. It hides the rest.
#pragma once

/// Marks a class or function that the shared library shows to hosts.
#define KELTRUN2_API [[gnu::visibility("default")]]
