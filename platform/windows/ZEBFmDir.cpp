#include "platform/ZEBFmDir.h"

#include <windows.h>

#include <atomic>
#include <cstring>
#include <memory>

#include "platform/windows/ZEBWindowsName.h"

namespace {

// Operations on names that leave what is open under them as it is, as from Windows 10 on; the
// headers may not have them.
constexpr auto DISPOSITION_INFO_EX = static_cast<FILE_INFO_BY_HANDLE_CLASS>(21);
constexpr auto RENAME_INFO_EX = static_cast<FILE_INFO_BY_HANDLE_CLASS>(22);
constexpr DWORD DISPOSITION_DELETE = 0x1;
constexpr DWORD DISPOSITION_POSIX_SEMANTICS = 0x2;
constexpr DWORD DISPOSITION_IGNORE_READONLY = 0x10;
constexpr DWORD RENAME_REPLACE_IF_EXISTS = 0x1;
constexpr DWORD RENAME_POSIX_SEMANTICS = 0x2;
constexpr DWORD RENAME_IGNORE_READONLY = 0x40;

struct HandleCloser {
  void operator()(void* handle) const { CloseHandle(handle); }
};
using File = std::unique_ptr<void, HandleCloser>;

/// A file, opened to be renamed or removed while others have it open; null where that fails, as for
/// a directory.
File openToMove(const std::wstring& path) {
  const HANDLE handle = CreateFileW(path.c_str(), DELETE | SYNCHRONIZE,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
  return File(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

/// Removes the name at once, also while the file is open somewhere. Returns false where the system
/// or the file system cannot.
bool removeAtOnce(const std::wstring& path) {
  const File file = openToMove(path);
  DWORD flags = DISPOSITION_DELETE | DISPOSITION_POSIX_SEMANTICS | DISPOSITION_IGNORE_READONLY;
  return file != nullptr &&
         SetFileInformationByHandle(file.get(), DISPOSITION_INFO_EX, &flags, sizeof flags) != 0;
}

/// The same for a new name in place of another file's.
bool renameAtOnce(const std::wstring& from, const std::wstring& to) {
  const File file = openToMove(from);
  if (file == nullptr) {
    return false;
  }
  // The flags stand where the headers of older systems have ReplaceIfExists.
  const std::size_t bytes = to.size() * sizeof(wchar_t);
  const std::size_t size = sizeof(FILE_RENAME_INFO) + bytes;
  const std::unique_ptr<unsigned char[]> storage(new unsigned char[size]());
  auto* const info = reinterpret_cast<FILE_RENAME_INFO*>(storage.get());
  constexpr DWORD FLAGS =
      RENAME_REPLACE_IF_EXISTS | RENAME_POSIX_SEMANTICS | RENAME_IGNORE_READONLY;
  std::memcpy(storage.get(), &FLAGS, sizeof FLAGS);
  info->FileNameLength = static_cast<DWORD>(bytes);
  std::memcpy(info->FileName, to.data(), bytes);
  return SetFileInformationByHandle(file.get(), RENAME_INFO_EX, info, static_cast<DWORD>(size)) !=
         0;
}

/// A name beside that one which nobody uses.
std::wstring unusedNameBeside(const std::wstring& path) {
  static std::atomic<unsigned int> number{0};
  return path + L".removed-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
         std::to_wstring(++number);
}

/// Removes a file that may be open, where that takes effect only when it is closed: it waits for
/// that under another name. Returns false when it is a directory, is absent or must stay.
bool removeAside(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
    return false;
  }
  const std::wstring aside = unusedNameBeside(path);
  if (MoveFileExW(path.c_str(), aside.c_str(), 0) == 0) {
    return DeleteFileW(path.c_str()) != 0;
  }
  if (DeleteFileW(aside.c_str()) == 0) {
    MoveFileExW(aside.c_str(), path.c_str(), 0);
    return false;
  }
  return true;
}

}  // namespace

int ZEBFmDir::exists(const I18NString& name, int mode) {
  const DWORD attributes = GetFileAttributesW(ZEBWindowsName::toPath(name).c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) {
    return 0;
  }
  constexpr int TYPE_BITS = 0170000;
  constexpr int WRITE_PERMISSIONS = 0222;
  const bool isDirectory = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  const int type = isDirectory ? DIRECTORY : READ_WRITE_FILE & TYPE_BITS;
  const bool isReadOnly = !isDirectory && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
  return type == (mode & TYPE_BITS) && !(isReadOnly && (mode & WRITE_PERMISSIONS) != 0) ? 1 : 0;
}

int ZEBFmDir::isDevice(const I18NString&) {
  return 0;  // devices are in no directory
}

int ZEBFmDir::isLinkToOpenFile(const I18NString&) {
  return 0;  // neither are standard streams
}

std::pair<I18NString, I18NString> ZEBFmDir::splitPath(const I18NString& name) {
  const std::string path = name.toStdString();
  const std::size_t end = path.find_last_of("/\\:");
  if (end == std::string::npos) {
    return {I18NString(), name};
  }
  // The separator belongs to a root, as in "/", "C:" and "C:\".
  const bool isRoot = end == 0 || path[end] == ':' || path[end - 1] == ':';
  return {path.substr(0, isRoot ? end + 1 : end), path.substr(end + 1)};
}

int ZEBFmDir::removeFile(const I18NString& name) {
  const std::wstring path = ZEBWindowsName::toPath(name);
  return removeAtOnce(path) || removeAside(path) ? 1 : 0;
}

int ZEBFmDir::renameFile(const I18NString& from, const I18NString& to) {
  const std::wstring source = ZEBWindowsName::toPath(from);
  const std::wstring target = ZEBWindowsName::toPath(absolutePath(to));
  if (renameAtOnce(source, target) ||
      MoveFileExW(source.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING) != 0) {
    return 1;
  }
  // Perhaps the file to be replaced is open.
  return GetFileAttributesW(source.c_str()) != INVALID_FILE_ATTRIBUTES && removeAside(target) &&
                 MoveFileExW(source.c_str(), target.c_str(), 0) != 0
             ? 1
             : 0;
}

I18NString ZEBFmDir::absolutePath(const I18NString& name) {
  return name.isEmpty()
             ? name
             : ZEBWindowsName::fromWide(ZEBWindowsName::absolute(ZEBWindowsName::toWide(name)));
}

std::int64_t ZEBFmDir::modificationTime(const I18NString& name) {
  WIN32_FILE_ATTRIBUTE_DATA status{};
  if (GetFileAttributesExW(ZEBWindowsName::toPath(name).c_str(), GetFileExInfoStandard, &status) ==
      0) {
    return NO_TIME;
  }
  constexpr std::int64_t NANOSECONDS_PER_TICK = 100;
  constexpr std::int64_t TICKS_BEFORE_1970 = 116444736000000000;
  const auto ticks = static_cast<std::int64_t>(status.ftLastWriteTime.dwHighDateTime) << 32 |
                     status.ftLastWriteTime.dwLowDateTime;
  return (ticks - TICKS_BEFORE_1970) * NANOSECONDS_PER_TICK;
}

std::vector<std::string> ZEBFmDir::list(const I18NString& directory) {
  std::vector<std::string> names;
  WIN32_FIND_DATAW entry{};
  const HANDLE search = FindFirstFileW(ZEBWindowsName::toPath(directory + "\\*").c_str(), &entry);
  if (search != INVALID_HANDLE_VALUE) {
    do {
      const std::string name = ZEBWindowsName::fromWide(entry.cFileName).toStdString();
      if (name != "." && name != "..") {
        names.push_back(name);
      }
    } while (FindNextFileW(search, &entry) != 0);
    FindClose(search);
  }
  return names;
}
