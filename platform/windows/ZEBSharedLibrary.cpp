#include "platform/ZEBSharedLibrary.h"

#include <windows.h>

#include "platform/windows/ZEBWindowsName.h"

int ZEBSharedLibrary::load(const I18NString& name) {
  m_handle = nullptr;
  if (!isBaseName(name)) {
    return 0;
  }
  for (const I18NString& file : {name + ".dll", "lib" + name + ".dll"}) {
    m_handle = LoadLibraryExW(ZEBWindowsName::toWide(file).c_str(), nullptr, 0);
    if (m_handle != nullptr) {
      return 1;
    }
  }
  return 0;
}

ZEBSharedLibrary::Function ZEBSharedLibrary::getSymbol(const char* name) const {
  return m_handle == nullptr
             ? nullptr
             : reinterpret_cast<Function>(GetProcAddress(static_cast<HMODULE>(m_handle), name));
}
