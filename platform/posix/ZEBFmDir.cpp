#include "platform/ZEBFmDir.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

int ZEBFmDir::exists(const I18NString& name, int mode) {
  struct stat status {};
  if (stat(name.toStdString().c_str(), &status) != 0) {
    return 0;
  }
  const auto wanted = static_cast<mode_t>(mode);
  const mode_t permissions = wanted & ~static_cast<mode_t>(S_IFMT);
  return (status.st_mode & S_IFMT) == (wanted & S_IFMT) &&
                 (status.st_mode & permissions) == permissions
             ? 1
             : 0;
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
  return unlink(name.toStdString().c_str()) == 0 ? 1 : 0;
}

int ZEBFmDir::renameFile(const I18NString& from, const I18NString& to) {
  return std::rename(from.toStdString().c_str(), to.toStdString().c_str()) == 0 ? 1 : 0;
}

I18NString ZEBFmDir::absolutePath(const I18NString& name) {
  const std::string path = name.toStdString();
  if (path.empty() || path.front() == '/') {
    return name;
  }
  const std::unique_ptr<char, decltype(&std::free)> directory(getcwd(nullptr, 0), &std::free);
  if (directory == nullptr) {
    return name;
  }
  return std::string(directory.get()) + "/" + path;
}

std::int64_t ZEBFmDir::modificationTime(const I18NString& name) {
  constexpr std::int64_t NANOSECONDS = 1000000000;
  struct stat status {};
  if (stat(name.toStdString().c_str(), &status) != 0) {
    return NO_TIME;
  }
  return status.st_mtim.tv_sec * NANOSECONDS + status.st_mtim.tv_nsec;
}

std::vector<std::string> ZEBFmDir::list(const I18NString& directory) {
  std::vector<std::string> names;
  const std::unique_ptr<DIR, int (*)(DIR*)> stream(opendir(directory.toStdString().c_str()),
                                                   &closedir);
  if (stream != nullptr) {
    while (const dirent* const entry = readdir(stream.get())) {
      const std::string name = entry->d_name;
      if (name != "." && name != "..") {
        names.push_back(name);
      }
    }
  }
  return names;
}
