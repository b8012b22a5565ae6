#ifndef PLATFORM_ZEBSHAREDLIBRARY_H
#define PLATFORM_ZEBSHAREDLIBRARY_H

#include "platform/I18NString.h"

/// A shared library that is loaded by name while the process runs. It is never unloaded, neither by
/// the destructor nor when another one is loaded in its place, because objects that it made may
/// live until the end of the process.
class ZEBSharedLibrary {
 public:
  /// Any function; to be cast to its type before it is called.
  using Function = void (*)();

  /// Loads the library of that base name, without the system's prefix and suffix, from where the
  /// system looks for libraries: libNAME.so or else NAME.so, on Windows NAME.dll or else
  /// libNAME.dll. Runs the library's initialisers. Returns 1, or 0 when there is no such library,
  /// it cannot be loaded or `name` is no base name: then nothing is loaded here, whatever was
  /// before.
  int load(const I18NString& name);
  /// Whether `name` stays where the system looks: it is not empty and has nothing of a path in it.
  static bool isBaseName(const I18NString& name) {
    return !name.isEmpty() && name.toStdString().find_first_of("/\\:") == std::string::npos;
  }
  /// Whether the last load() succeeded.
  int isLoaded() const noexcept { return m_handle != nullptr ? 1 : 0; }
  /// The library's function exported with C linkage under `name`; null when there is none or
  /// nothing is loaded.
  Function getSymbol(const char* name) const;

 private:
  void* m_handle = nullptr;
};

#endif
