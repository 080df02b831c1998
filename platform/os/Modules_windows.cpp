#ifdef _WIN32

#include <windows.h>

#include "platform/os/Modules.h"

namespace korvo::os {

void* symbolBeside(void (*function)(), const std::string& file, const char* symbol) {
  constexpr DWORD kFlags =
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
  HMODULE library = nullptr;
  if (!GetModuleHandleExW(kFlags, reinterpret_cast<LPCWSTR>(function), &library)) return nullptr;
  std::wstring path(32'768, L'\0');  // the longest that there is
  path.resize(GetModuleFileNameW(library, path.data(), static_cast<DWORD>(path.size())));
  path.resize(path.rfind(L'\\') + 1);
  path.append(file.begin(), file.end());
  const HMODULE module = LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  return module ? reinterpret_cast<void*>(GetProcAddress(module, symbol)) : nullptr;
}

}  // namespace korvo::os

#endif
