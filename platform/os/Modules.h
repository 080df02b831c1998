#pragma once

#include <string>

/// Parts of a library that are loaded only when they are needed.
namespace korvo::os {

/// Loads the module `file` that lies in the folder of the library (or program) that `function` is
/// part of, and finds `symbol` in it. The module stays loaded.
///
/// @errors  Null when there is no such module, something that it needs is missing, or it has no
/// such
///          symbol. Throws what std::string throws.
void* symbolBeside(void (*function)(), const std::string& file, const char* symbol);

}  // namespace korvo::os
