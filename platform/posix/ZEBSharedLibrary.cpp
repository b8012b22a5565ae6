#include "platform/ZEBSharedLibrary.h"

#include <dlfcn.h>

#include <string>

int ZEBSharedLibrary::load(const I18NString& name) {
  m_handle = nullptr;
  if (!isBaseName(name)) {
    return 0;
  }
  const std::string base = name.toStdString();
  for (const std::string& file : {"lib" + base + ".so", base + ".so"}) {
    m_handle = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (m_handle != nullptr) {
      return 1;
    }
  }
  return 0;
}

ZEBSharedLibrary::Function ZEBSharedLibrary::getSymbol(const char* name) const {
  return m_handle == nullptr ? nullptr : reinterpret_cast<Function>(dlsym(m_handle, name));
}
