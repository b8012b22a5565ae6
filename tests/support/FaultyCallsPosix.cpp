#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <mutex>
#include <set>
#include <utility>

#include "support/FaultyCalls.h"

namespace {

struct State {
  std::string directory;
  std::vector<FaultyCalls::Fault> plan;
  std::function<void()> afterShort;
  std::map<std::string, int> made;
  int injected = 0;
  std::vector<FaultyCalls::Destroyed> destroyed;
};

// Never destroyed: files are still closed at the end of the process.
std::mutex& g_lock = *new std::mutex;
State* g_state = nullptr;                                           // guarded by g_lock
std::set<std::intptr_t>& g_watched = *new std::set<std::intptr_t>;  // descriptors and directories

bool isWatched(const std::string& path) {
  const std::string& directory = g_state->directory;
  return path.compare(0, directory.size(), directory) == 0 &&
         (path.size() == directory.size() || path[directory.size()] == '/');
}

bool isWatched(std::intptr_t open) { return g_watched.count(open) != 0; }

/// What is to become of a call: 0, or an error as in Fault.
int fate(const char* call) {
  const int number = ++g_state->made[call];
  for (const FaultyCalls::Fault& fault : g_state->plan) {
    if (fault.call == call && number >= fault.first && number - fault.first < fault.count) {
      ++g_state->injected;
      return fault.error == FaultyCalls::SHORT_THEN_FULL && number > fault.first ? ENOSPC
                                                                                 : fault.error;
    }
  }
  return 0;
}

template <typename File>
int fateOf(const char* call, const File& file) {
  const std::lock_guard<std::mutex> guard(g_lock);
  return g_state != nullptr && isWatched(file) ? fate(call) : 0;
}

template <typename Result>
Result failing(int error, Result result) {
  errno = error;
  return result;
}

/// Makes a call that may destroy what the file holds.
template <typename Call>
int keeping(const char* name, const std::string& path, Call call) {
  std::ifstream file(path, std::ios::binary);
  const std::string content{std::istreambuf_iterator<char>(file), {}};
  const int result = call();
  const int error = errno;
  const std::lock_guard<std::mutex> guard(g_lock);
  if (result >= 0 && g_state != nullptr && isWatched(path) && !content.empty()) {
    g_state->destroyed.push_back({name, path, content});
  }
  return failing(error, result);
}

void setWatched(std::intptr_t open, bool watched) {
  const std::lock_guard<std::mutex> guard(g_lock);
  if (watched) {
    g_watched.insert(open);
  } else {
    g_watched.erase(open);
  }
}

template <typename Write>
ssize_t writeFaulty(const char* call, int descriptor, std::size_t size, Write write) {
  const int error = fateOf(call, std::intptr_t{descriptor});
  if (error > 0) {
    return failing(error, ssize_t{-1});
  }
  if (error >= 0 || error == FaultyCalls::NOTHING) {
    return error == 0 ? write(size) : 0;
  }
  const ssize_t written = write((size + 1) / 2);
  g_state->afterShort();
  return written;
}

}  // namespace

FaultyCalls::FaultyCalls(const std::string& directory, std::vector<Fault> plan,
                         std::function<void()> afterShort) {
  const std::lock_guard<std::mutex> guard(g_lock);
  g_state = new State{directory, std::move(plan), std::move(afterShort), {}, 0, {}};
}

FaultyCalls::~FaultyCalls() {
  const std::lock_guard<std::mutex> guard(g_lock);
  delete std::exchange(g_state, nullptr);
}

void FaultyCalls::heal() {
  const std::lock_guard<std::mutex> guard(g_lock);
  g_state->plan.clear();
}

std::map<std::string, int> FaultyCalls::made() const {
  const std::lock_guard<std::mutex> guard(g_lock);
  return g_state->made;
}

int FaultyCalls::injected() const {
  const std::lock_guard<std::mutex> guard(g_lock);
  return g_state->injected;
}

std::vector<FaultyCalls::Destroyed> FaultyCalls::destroyed() const {
  const std::lock_guard<std::mutex> guard(g_lock);
  return g_state->destroyed;
}

// The linker puts these in place of the calls. Their names are its choice.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {

#define WRAPPED(Result, name, ...)   \
  Result __real_##name(__VA_ARGS__); \
  Result __wrap_##name(__VA_ARGS__);
WRAPPED(int, open, const char* path, int flags, ...)
WRAPPED(int, close, int descriptor)
WRAPPED(ssize_t, write, int descriptor, const void* bytes, size_t size)
WRAPPED(ssize_t, pwrite, int descriptor, const void* bytes, size_t size, off_t offset)
WRAPPED(off_t, lseek, int descriptor, off_t offset, int origin)
WRAPPED(int, flock, int descriptor, int operation)
WRAPPED(int, fcntl, int descriptor, int command, ...)
WRAPPED(int, fstat, int descriptor, struct stat* status)
WRAPPED(int, fstatfs, int descriptor, struct statfs* status)
WRAPPED(int, stat, const char* path, struct stat* status)
WRAPPED(int, rename, const char* from, const char* to)
WRAPPED(int, unlink, const char* path)
WRAPPED(DIR*, opendir, const char* path)
WRAPPED(struct dirent*, readdir, DIR* stream)
#undef WRAPPED

int __wrap_open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  const std::string self = "/proc/self/fd/";
  const std::string name = path;
  const bool isReopening = name.compare(0, self.size(), self) == 0;
  const std::intptr_t reopened = isReopening ? std::stoi(name.substr(self.size())) : -1;
  const int error = isReopening ? fateOf("reopen", reopened) : fateOf("open", name);
  if (error != 0) {
    return failing(error, -1);
  }
  const auto call = [&] { return __real_open(path, flags, mode); };
  const int descriptor = (flags & O_TRUNC) != 0 ? keeping("open", name, call) : call();
  if (descriptor >= 0) {
    const std::lock_guard<std::mutex> guard(g_lock);
    if (g_state != nullptr && (isReopening ? isWatched(reopened) : isWatched(name))) {
      g_watched.insert(descriptor);
    }
  }
  return descriptor;
}

int __wrap_close(int descriptor) {
  const int error = fateOf("close", std::intptr_t{descriptor});
  setWatched(descriptor, false);
  const int result = __real_close(descriptor);  // the descriptor is free, whatever close returns
  return error != 0 ? failing(error, -1) : result;
}

ssize_t __wrap_write(int descriptor, const void* bytes, size_t size) {
  return writeFaulty("write", descriptor, size,
                     [&](std::size_t part) { return __real_write(descriptor, bytes, part); });
}

ssize_t __wrap_pwrite(int descriptor, const void* bytes, size_t size, off_t offset) {
  return writeFaulty("pwrite", descriptor, size, [&](std::size_t part) {
    return __real_pwrite(descriptor, bytes, part, offset);
  });
}

off_t __wrap_lseek(int descriptor, off_t offset, int origin) {
  const int error = fateOf("lseek", std::intptr_t{descriptor});
  return error != 0 ? failing(error, off_t{-1}) : __real_lseek(descriptor, offset, origin);
}

int __wrap_flock(int descriptor, int operation) {
  const int error = fateOf("flock", std::intptr_t{descriptor});
  return error != 0 ? failing(error, -1) : __real_flock(descriptor, operation);
}

int __wrap_fcntl(int descriptor, int command, ...) {
  va_list arguments;
  va_start(arguments, command);
  const int argument = command == F_GETFL || command == F_GETFD ? 0 : va_arg(arguments, int);
  va_end(arguments);
  const int error = fateOf("fcntl", std::intptr_t{descriptor});
  return error != 0 ? failing(error, -1) : __real_fcntl(descriptor, command, argument);
}

int __wrap_fstat(int descriptor, struct stat* status) {
  const int error = fateOf("fstat", std::intptr_t{descriptor});
  return error != 0 ? failing(error, -1) : __real_fstat(descriptor, status);
}

int __wrap_fstatfs(int descriptor, struct statfs* status) {
  const int error = fateOf("fstatfs", std::intptr_t{descriptor});
  return error != 0 ? failing(error, -1) : __real_fstatfs(descriptor, status);
}

int __wrap_stat(const char* path, struct stat* status) {
  const int error = fateOf("stat", std::string(path));
  return error != 0 ? failing(error, -1) : __real_stat(path, status);
}

int __wrap_rename(const char* from, const char* to) {
  const int error = fateOf("rename", std::string(from));
  return error != 0 ? failing(error, -1)
                    : keeping("rename", to, [&] { return __real_rename(from, to); });
}

int __wrap_unlink(const char* path) {
  const int error = fateOf("unlink", std::string(path));
  return error != 0 ? failing(error, -1)
                    : keeping("unlink", path, [&] { return __real_unlink(path); });
}

DIR* __wrap_opendir(const char* path) {
  const int error = fateOf("opendir", std::string(path));
  DIR* const stream = error != 0 ? failing<DIR*>(error, nullptr) : __real_opendir(path);
  if (stream != nullptr) {
    const std::lock_guard<std::mutex> guard(g_lock);
    if (g_state != nullptr && isWatched(std::string(path))) {
      g_watched.insert(reinterpret_cast<std::intptr_t>(stream));
    }
  }
  return stream;
}

struct dirent* __wrap_readdir(DIR* stream) {
  const int error = fateOf("readdir", reinterpret_cast<std::intptr_t>(stream));
  return error != 0 ? failing<struct dirent*>(error, nullptr) : __real_readdir(stream);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)
