#include "platform/ZEBFmDir.h"

#include <dirent.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <system_error>

#include "platform/posix/Uninterrupted.h"

namespace {

/// Returns 0 or the error.
int statusOf(const I18NString& name, struct stat& status) {
  const std::string path = name.toStdString();
  return uninterrupted([&] { return stat(path.c_str(), &status); }) == 0 ? 0 : errno;
}

/// Whether the error of a look at a name means that this process would find nothing there.
bool meansAbsence(int error) {
  return error == ENOENT || error == ENOTDIR || error == EACCES || error == ELOOP ||
         error == ENAMETOOLONG;
}

/// Whether the name leads to the working directory. One that is not UTF-8, or that stands in a
/// directory which this process may not search, cannot be named from the root.
bool isWorkingDirectory(const I18NString& name) {
  struct stat named {};
  struct stat working {};
  return statusOf(name, named) == 0 && statusOf(".", working) == 0 &&
         named.st_dev == working.st_dev && named.st_ino == working.st_ino;
}

}  // namespace

int ZEBFmDir::exists(const I18NString& name, int mode) {
  struct stat status {};
  const int error = statusOf(name, status);
  if (error != 0) {
    return meansAbsence(error) ? 0 : 1;
  }
  const auto wanted = static_cast<mode_t>(mode);
  const mode_t permissions = wanted & ~static_cast<mode_t>(S_IFMT);
  return (status.st_mode & S_IFMT) == (wanted & S_IFMT) &&
                 (status.st_mode & permissions) == permissions
             ? 1
             : 0;
}

int ZEBFmDir::isDevice(const I18NString& name) {
  struct stat status {};
  return statusOf(name, status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode) ? 1
                                                                                             : 0;
}

int ZEBFmDir::isLinkToOpenFile(const I18NString& name) {
  constexpr int MOST_LINKS = 40;  // as the system itself follows
  std::string path = name.toStdString();
  struct stat status {};
  for (int i = 0; i < MOST_LINKS && lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode);
       ++i) {
    const std::string directory = path.substr(0, path.rfind('/') + 1);  // empty where there is none
    struct statfs fileSystem {};
    if (statfs(directory.empty() ? "." : directory.c_str(), &fileSystem) == 0 &&
        fileSystem.f_type == PROC_SUPER_MAGIC) {
      return 1;
    }
    std::error_code unreadable;
    const std::string target = std::filesystem::read_symlink(path, unreadable).string();
    path = target.empty() || target.front() == '/' ? target : directory + target;
  }
  return 0;
}

std::pair<I18NString, I18NString> ZEBFmDir::splitPath(const I18NString& name) {
  const std::string path = name.toStdString();
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) {
    return {I18NString(), name};
  }
  return {path.substr(0, slash == 0 ? 1 : slash), path.substr(slash + 1)};
}

int ZEBFmDir::removeFile(const I18NString& name) {
  const std::string path = name.toStdString();
  return uninterrupted([&] { return unlink(path.c_str()); }) == 0 ? 1 : 0;
}

int ZEBFmDir::renameFile(const I18NString& from, const I18NString& to) {
  const std::string source = from.toStdString();
  const std::string target = to.toStdString();
  return uninterrupted([&] { return std::rename(source.c_str(), target.c_str()); }) == 0 ? 1 : 0;
}

I18NString ZEBFmDir::absolutePath(const I18NString& name) {
  const std::string path = name.toStdString();
  if (path.empty() || path.front() == '/') {
    return name;
  }
  const std::unique_ptr<char, decltype(&std::free)> working(getcwd(nullptr, 0), &std::free);
  if (working == nullptr) {
    return name;
  }
  const I18NString directory = working.get();
  return isWorkingDirectory(directory) ? directory + "/" + name : name;
}

std::int64_t ZEBFmDir::modificationTime(const I18NString& name) {
  constexpr std::int64_t NANOSECONDS = 1000000000;
  struct stat status {};
  if (statusOf(name, status) != 0) {
    return NO_TIME;
  }
  return status.st_mtim.tv_sec * NANOSECONDS + status.st_mtim.tv_nsec;
}

std::vector<std::string> ZEBFmDir::list(const I18NString& directory) {
  std::vector<std::string> names;
  const std::unique_ptr<DIR, int (*)(DIR*)> stream(opendir(directory.toStdString().c_str()),
                                                   &closedir);
  if (stream != nullptr) {
    errno = 0;
    while (const dirent* const entry = readdir(stream.get())) {
      const std::string name = entry->d_name;
      if (name != "." && name != "..") {
        names.push_back(name);
      }
      errno = 0;
    }
    if (errno != 0) {
      names.clear();
    }
  }
  return names;
}
