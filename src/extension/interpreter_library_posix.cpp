// A host loads this module, and with it the interpreter library, with local symbols as a rule. `import _struct` then
// fails with an undefined symbol: Python's extension modules expect those of the interpreter to be global.
#include "extension/startup_steps.h"
#include "python/python_api.h"

#include <dlfcn.h>
#include <langinfo.h>
#include <locale.h>

#include <cstdlib>
#include <cstring>

namespace ling::cpython {

namespace {

// Whether the locale of the environment, which is that of the interpreter, knows no more than ASCII.
bool is_plain_locale() noexcept {
  const locale_t locale = newlocale(LC_CTYPE_MASK, "", nullptr);
  if (locale == nullptr) {
    return true;  // there is no such locale; the interpreter falls back to the plain one
  }
  const bool plain = std::strcmp(nl_langinfo_l(CODESET, locale), "ANSI_X3.4-1968") == 0;
  freelocale(locale);
  return plain;
}

}  // namespace

void open_interpreter_library() noexcept {
  Dl_info info;
  if (dladdr(reinterpret_cast<void*>(&Py_InitializeEx), &info) != 0 && info.dli_fname != nullptr) {
    // The handle stays open, as the interpreter stays alive.
    dlopen(info.dli_fname, RTLD_NOW | RTLD_GLOBAL | RTLD_NOLOAD);
  }
}

void choose_text_encoding() noexcept {
  // The flag has no declaration in the limited API.
  auto* const utf8_mode = static_cast<int*>(dlsym(RTLD_DEFAULT, "Py_UTF8Mode"));
  if (utf8_mode == nullptr) {
    return;
  }
  const char* const asked = std::getenv("PYTHONUTF8");
  const bool decided = asked != nullptr && *asked != '\0';
  *utf8_mode = (decided ? std::strcmp(asked, "1") == 0 : is_plain_locale()) ? 1 : 0;
}

}  // namespace ling::cpython
