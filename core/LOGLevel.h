#ifndef CORE_LOGLEVEL_H
#define CORE_LOGLEVEL_H

#include <atomic>
#include <string>

#include "platform/I18NString.h"

/// A severity: a rank, by which levels are compared, a name, and the severity that a syslog daemon
/// is told. The seven predefined levels exist once in the process, are made on first use and live
/// to its end. A level that is in use is not to be changed: any thread may be reading it, and what
/// its rank decides is remembered. A logger that is to have another level is given one.
class LOG4ZEB_EXPORT LOGLevel {
 public:
  static constexpr int ALL_RANK = -2147483647 - 1;
  static constexpr int DEBUG_RANK = 10000;
  static constexpr int INFO_RANK = 20000;
  static constexpr int WARN_RANK = 30000;
  static constexpr int ERROR_RANK = 40000;
  static constexpr int FATAL_RANK = 50000;
  static constexpr int OFF_RANK = 2147483647;

  LOGLevel(const LOGLevel& other);
  LOGLevel& operator=(const LOGLevel& other);
  virtual ~LOGLevel();

  /// 1 when rank and syslog severity are equal, else 0; the name does not count.
  int operator==(const LOGLevel& other) const;
  int operator!=(const LOGLevel& other) const;

  /// 1 when this rank is at least that of `r`, 0 when it is not or `r` is null.
  int isGreaterOrEqual(const LOGLevel* r) const;
  /// The rank.
  int toInt() const { return level; }
  int getSyslogEquivalent() const { return syslogEquivalent; }
  /// The name; valid as long as the level.
  const char* toString() const { return levelStr.c_str(); }
  /// The same as a text.
  const I18NString& getText() const { return m_text; }

  /// The predefined level of that name, whatever its case; DEBUG for any other text. Every level
  /// returned by these operations belongs to the library.
  static LOGLevel* toLevel(const I18NString& sArg);
  /// The same with a default for any other text; finds only levels that exist already.
  static LOGLevel* toLevel(const I18NString& sArg, LOGLevel* defaultLevel);
  /// The predefined level of exactly that rank; DEBUG for any other number.
  static LOGLevel* toLevel(int val) {
    LOGLevel* const level = toLevel(val, nullptr);
    return level == nullptr ? toLevel(DEBUG_RANK, nullptr) : level;
  }
  static LOGLevel* toLevel(int val, LOGLevel* defaultLevel);

 protected:
  LOGLevel(int level, const char* levelStr, int syslogEquivalent);
  /// Rank 50000, no name.
  /// Deliberate: the syslog severity is 50000, too.
  LOGLevel();

 private:
  static void initialize();
  static void createIfMissing(std::atomic<LOGLevel*>& slot, int rank, const char* name,
                              int syslogSeverity);

  int level;
  std::string levelStr;
  int syslogEquivalent;
  I18NString m_text;  // levelStr, converted once

  static std::atomic<LOGLevel*> ALL_OBJ;
  static std::atomic<LOGLevel*> DEBUG_OBJ;
  static std::atomic<LOGLevel*> INFO_OBJ;
  static std::atomic<LOGLevel*> WARN_OBJ;
  static std::atomic<LOGLevel*> ERROR_OBJ;
  static std::atomic<LOGLevel*> FATAL_OBJ;
  static std::atomic<LOGLevel*> OFF_OBJ;
};

#endif
