// The import table of the process's executable, through which it calls the
// system. Layout: the PE format's reference, "The .idata Section".
#pragma once

namespace nuvelta::wine {

// Makes every call of `function` in `library` by the executable go to
// `replacement`; answers where it went before. Null, and nothing is changed, when
// the executable does not import it. Case does not matter in the library's name.
void* ReplaceImport(const char* library, const char* function, void* replacement);

// The same with the types of a function.
template <class Function>
Function* Replace(const char* library, const char* function, Function* replacement) {
  return reinterpret_cast<Function*>(
      ReplaceImport(library, function, reinterpret_cast<void*>(replacement)));
}

}  // namespace nuvelta::wine
