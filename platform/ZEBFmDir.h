#ifndef PLATFORM_ZEBFMDIR_H
#define PLATFORM_ZEBFMDIR_H

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "platform/I18NString.h"

/// Operations on the file system's names.
class LOG4ZEB_EXPORT ZEBFmDir {
 public:
  /// Modes for exists(): a regular file, one that its owner may read and write, and a directory.
  static constexpr int REGULAR_FILE = 32768;
  static constexpr int READ_WRITE_FILE = 33152;
  static constexpr int DIRECTORY = 16384;

  /// 1 when something of the type in `mode` (the type bits of a file mode) exists under the name
  /// and has all of the permission bits in `mode`, else 0. 1 also when the system fails to tell,
  /// because whoever takes a file for absent may write over it.
  static int exists(const I18NString& name, int mode);
  /// 1 when the name is that of a device, a pipe or a socket; 0 when the system fails to tell.
  static int isDevice(const I18NString& name);
  /// 1 when the name is a link, perhaps by way of others, to a file that a process has open, as
  /// /dev/stdout is; 0 when the system fails to tell.
  static int isLinkToOpenFile(const I18NString& name);
  /// Splits before the file name: the directory part without its last separator (but "/" whole,
  /// and on Windows "C:" and "C:\"), empty when there is none, and the file part.
  static std::pair<I18NString, I18NString> splitPath(const I18NString& name);
  /// Non-zero on success.
  static int removeFile(const I18NString& name);
  /// Gives the file a new name, replacing a file that has it. Non-zero on success.
  static int renameFile(const I18NString& from, const I18NString& to);
  /// The name as it reads from the root of the file system; `name` itself when the working
  /// directory is not known, or cannot be reached by its name.
  static I18NString absolutePath(const I18NString& name);
  /// When the file was last modified, in nanoseconds since 1970-01-01 00:00 UTC; NO_TIME when it
  /// cannot be told.
  static constexpr std::int64_t NO_TIME = INT64_MIN;
  static std::int64_t modificationTime(const I18NString& name);
  /// The names in a directory, without its path; empty when it cannot be read to its end.
  static std::vector<std::string> list(const I18NString& directory);
};

#endif
