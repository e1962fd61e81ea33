// What the shared library shows to hosts: the public classes and functions. It hides the rest.
#pragma once

#define KELTRUN2_API [[gnu::visibility("default")]]
