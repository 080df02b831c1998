#ifndef _WIN32

#include <dlfcn.h>

#include "platform/os/Modules.h"

namespace korvo::os {

void* symbolBeside(void (*function)(), const std::string& file, const char* symbol) {
  Dl_info library{};
  if (dladdr(reinterpret_cast<void*>(function), &library) == 0) return nullptr;
  const std::string path = library.dli_fname;
  const std::string folder = path.substr(0, path.rfind('/') + 1);  // empty without any '/'
  void* module = dlopen((folder.empty() ? "./" + file : folder + file).c_str(), RTLD_NOW);
  return module ? dlsym(module, symbol) : nullptr;
}

}  // namespace korvo::os

#endif
