#include "appenders/LOGRolledFile.h"

#include <map>
#include <string>

#include "platform/ZEBThreadGuard.h"
#include "platform/ZEBThrowable.h"

namespace {

ZEBThreadCriticalSection g_lock;

/// By absolute name, guarded by g_lock. Never destroyed, because appenders may be used to the end
/// of the process.
std::map<std::string, std::weak_ptr<LOGRolledFile>>& files() {
  static auto* const table = new std::map<std::string, std::weak_ptr<LOGRolledFile>>;
  return *table;
}

}  // namespace

std::shared_ptr<LOGRolledFile> LOGRolledFile::of(const I18NString& absoluteName) {
  const std::string name = absoluteName.toStdString();
  auto made = std::make_shared<LOGRolledFile>();  // whose destructor takes the lock
  const ZEBThreadGuard guard(g_lock);
  std::weak_ptr<LOGRolledFile>& entry = files()[name];
  std::shared_ptr<LOGRolledFile> known = entry.lock();
  if (known != nullptr) {
    return known;
  }
  entry = made;
  return made;
}

LOGRolledFile::~LOGRolledFile() {
  try {
    const ZEBThreadGuard guard(g_lock);
    for (auto entry = files().begin(); entry != files().end();) {
      entry = entry->second.expired() ? files().erase(entry) : std::next(entry);
    }
  } catch (const ZEBThrowable&) {
    // The lock could not be had; the next one of these takes the entry out.
  }
}
