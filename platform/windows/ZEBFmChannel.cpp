#include "platform/ZEBFmChannel.h"

#include <windows.h>

#include <algorithm>
#include <utility>

#include "platform/ZEBFmFile.h"
#include "platform/windows/ZEBWindowsName.h"

namespace {

// The lock is on one byte that no file reaches, because nobody else may read or write what is
// locked.
constexpr DWORD LOCKED_BYTE_LOW = 0xFFFFFFFE;
constexpr DWORD LOCKED_BYTE_HIGH = 0x7FFFFFFF;

constexpr DWORD SHARED_FULLY = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

HANDLE systemHandle(std::int64_t handle) {
  return reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(handle));
}

std::int64_t numberOf(HANDLE handle) { return reinterpret_cast<std::intptr_t>(handle); }

LARGE_INTEGER large(std::int64_t value) {
  LARGE_INTEGER result;
  result.QuadPart = value;
  return result;
}

OVERLAPPED at(DWORD low, DWORD high) {
  OVERLAPPED place{};
  place.Offset = low;
  place.OffsetHigh = high;
  return place;
}

/// Wine looks up the size of the file and then writes there.
bool isWine() {
  static const bool found =
      GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
  return found;
}

/// Volumes of other machines append at the end that this machine last knew of.
bool appendsAtomically(HANDLE file) {
  FILE_REMOTE_PROTOCOL_INFO remote{};
  return !isWine() &&
         GetFileInformationByHandleEx(file, FileRemoteProtocolInfo, &remote, sizeof remote) == 0;
}

HANDLE openToAppend(const std::wstring& path, DWORD access, bool truncate) {
  // Without the right to write anywhere else, every write is one to the end.
  return CreateFileW(path.c_str(), FILE_APPEND_DATA | FILE_READ_ATTRIBUTES | SYNCHRONIZE | access,
                     SHARED_FULLY, nullptr, truncate ? CREATE_ALWAYS : OPEN_ALWAYS,
                     FILE_ATTRIBUTE_NORMAL, nullptr);
}

}  // namespace

ZEBFmChannel::ZEBFmChannel(std::int64_t handle, bool owned) : m_handle(handle), m_owned(owned) {
  look();
  m_appendIsAtomic = !m_isRegular || !owned || appendsAtomically(systemHandle(handle));
}

ZEBFmChannel::~ZEBFmChannel() { close(); }

void ZEBFmChannel::look() noexcept {
  m_isRegular = GetFileType(systemHandle(m_handle)) == FILE_TYPE_DISK;
  m_appends = m_owned;
}

// Pipes are in no directory, and opening one never waits.
ZEBFmChannel::Opened ZEBFmChannel::open(const I18NString& name, bool truncate, bool /*mayWait*/) {
  const std::wstring path = ZEBWindowsName::toPath(name);
  // A lock needs the right to read; where that is denied, the file can still be logged to.
  HANDLE file = openToAppend(path, FILE_READ_DATA, truncate);
  if (file == INVALID_HANDLE_VALUE) {
    file = openToAppend(path, 0, truncate);
  }
  if (file == INVALID_HANDLE_VALUE) {
    return {nullptr, static_cast<int>(GetLastError())};
  }
  try {
    return {std::make_unique<ZEBFmChannel>(numberOf(file), true), 0};
  } catch (...) {
    CloseHandle(file);  // which nobody has, for want of memory
    throw;
  }
}

ZEBFmChannel::Opened ZEBFmChannel::attachStandard(int stream) {
  // A program without a console, such as a service, has no such handle or one that is not open.
  const HANDLE handle =
      GetStdHandle(stream == ZEBFmFile::STANDARD_ERROR ? STD_ERROR_HANDLE : STD_OUTPUT_HANDLE);
  SetLastError(NO_ERROR);
  if (handle == nullptr || handle == INVALID_HANDLE_VALUE ||
      (GetFileType(handle) == FILE_TYPE_UNKNOWN && GetLastError() != NO_ERROR)) {
    return {nullptr, notOpenError()};
  }
  return {std::make_unique<ZEBFmChannel>(numberOf(handle), false), 0};
}

std::chrono::seconds ZEBFmChannel::patienceAtEnd() noexcept { return std::chrono::seconds(2); }

int ZEBFmChannel::notOpenError() noexcept { return ERROR_INVALID_HANDLE; }

int ZEBFmChannel::failed() noexcept {
  m_lastError = static_cast<int>(GetLastError());
  return -1;
}

std::int64_t ZEBFmChannel::write(const char* bytes, std::size_t size) {
  constexpr std::size_t LARGEST_WRITE = 1U << 30;
  const auto count = static_cast<DWORD>(std::min(size, LARGEST_WRITE));
  for (;;) {
    DWORD written = 0;
    if (WriteFile(systemHandle(m_handle), bytes, count, &written, nullptr) == 0) {
      return failed();
    }
    if (written != 0 || size == 0) {
      return written;
    }
    if (m_isRegular) {
      SetLastError(ERROR_DISK_FULL);
      return failed();
    }
    Sleep(1);  // a pipe that does not block, and is full
  }
}

int ZEBFmChannel::overwrite(std::int64_t position, const char* bytes, std::size_t size) {
  const HANDLE file = ReOpenFile(systemHandle(m_handle), FILE_WRITE_DATA, SHARED_FULLY, 0);
  if (file == INVALID_HANDLE_VALUE) {
    return failed();
  }
  const LARGE_INTEGER begin = large(position);
  OVERLAPPED place = at(begin.LowPart, static_cast<DWORD>(begin.HighPart));
  DWORD written = 0;
  const bool succeeded =
      WriteFile(file, bytes, static_cast<DWORD>(size), &written, &place) != 0 && written == size;
  const int result = succeeded ? 0 : failed();
  CloseHandle(file);
  return result;
}

std::int64_t ZEBFmChannel::position() {
  LARGE_INTEGER current{};
  return SetFilePointerEx(systemHandle(m_handle), large(0), &current, FILE_CURRENT) != 0
             ? current.QuadPart
             : failed();
}

int ZEBFmChannel::seek(std::int64_t offset, int origin) {
  const DWORD method = origin == ZEBFmFile::ORIGIN_END ? FILE_END : FILE_BEGIN;
  return SetFilePointerEx(systemHandle(m_handle), large(offset), nullptr, method) != 0 ? 0
                                                                                       : failed();
}

std::int64_t ZEBFmChannel::size() {
  LARGE_INTEGER bytes{};
  return GetFileSizeEx(systemHandle(m_handle), &bytes) != 0 ? bytes.QuadPart : failed();
}

int ZEBFmChannel::lock() {
  OVERLAPPED place = at(LOCKED_BYTE_LOW, LOCKED_BYTE_HIGH);
  return LockFileEx(systemHandle(m_handle), LOCKFILE_EXCLUSIVE_LOCK, 0, 1, 0, &place) != 0
             ? 0
             : failed();
}

void ZEBFmChannel::unlock() noexcept {
  OVERLAPPED place = at(LOCKED_BYTE_LOW, LOCKED_BYTE_HIGH);
  UnlockFileEx(systemHandle(m_handle), 0, 1, 0, &place);
}

void ZEBFmChannel::partFromParent() noexcept {}

int ZEBFmChannel::close() noexcept {
  const std::int64_t handle = std::exchange(m_handle, CLOSED);
  return handle != CLOSED && m_owned && CloseHandle(systemHandle(handle)) == 0 ? failed() : 0;
}
