#include "appenders/LOGRolledFile.h"

#include <map>
#include <string>

#include "platform/ZEBThreadGuard.h"

std::shared_ptr<LOGRolledFile> LOGRolledFile::of(const I18NString& absoluteName) {
  // Never destroyed, because appenders may be used to the end of the process.
  static ZEBThreadCriticalSection lock;
  static auto& files = *new std::map<std::string, std::weak_ptr<LOGRolledFile>>;
  const ZEBThreadGuard guard(lock);
  for (auto entry = files.begin(); entry != files.end();) {
    entry = entry->second.expired() ? files.erase(entry) : std::next(entry);
  }
  std::weak_ptr<LOGRolledFile>& known = files[absoluteName.toStdString()];
  std::shared_ptr<LOGRolledFile> file = known.lock();
  if (file == nullptr) {
    file = std::make_shared<LOGRolledFile>();
    known = file;
  }
  return file;
}
