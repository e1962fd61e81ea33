// The comments of the public headers; docs.cpp is made from them by make_docs.py.
#pragma once

#include <string>

namespace keltrun::python {

/// The comment of a declaration, named as "Class", "Class.Member" or "Function"; "" if there is
/// none.
const char* Doc(const std::string& name);

}  // namespace keltrun::python
