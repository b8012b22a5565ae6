#include "appenders/LOGRolledFile.h"

#include <filesystem>
#include <map>
#include <string>
#include <system_error>

#include "platform/ZEBThreadGuard.h"
#include "platform/ZEBThrowable.h"

namespace {

ZEBThreadCriticalSection g_lock;

/// The same for all names that lead to the file through other directories or links to them. A link
/// in place of the file itself stays apart: a rollover renames the link.
std::string identityOf(const I18NString& absoluteName) {
  std::string name = absoluteName.toStdString();
  const auto path = std::filesystem::u8path(name);
  std::error_code error;
  const auto directory = std::filesystem::weakly_canonical(path.parent_path(), error);
  return error ? name : (directory / path.filename()).u8string();
}

/// By that identity, guarded by g_lock. Never destroyed, because appenders may be used to the end
/// of the process.
std::map<std::string, std::weak_ptr<LOGRolledFile>>& files() {
  static auto* const table = new std::map<std::string, std::weak_ptr<LOGRolledFile>>;
  return *table;
}

}  // namespace

std::shared_ptr<LOGRolledFile> LOGRolledFile::of(const I18NString& absoluteName) {
  const std::string identity = identityOf(absoluteName);
  auto made = std::make_shared<LOGRolledFile>();  // whose destructor takes the lock
  const ZEBThreadGuard guard(g_lock);
  std::weak_ptr<LOGRolledFile>& entry = files()[identity];
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
