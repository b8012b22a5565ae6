#ifndef CORE_LOGLOGGERKEY_H
#define CORE_LOGLOGGERKEY_H

#include <cstdint>

#include "platform/I18NString.h"

class LOGObject;

/// A name with its hash, computed once, under which a LOGHashtable keeps an object.
class LOG4ZEB_EXPORT LOGLoggerKey {
 public:
  explicit LOGLoggerKey(const I18NString& name);
  virtual ~LOGLoggerKey();

  std::uint32_t hashCode() const noexcept { return m_hashCode; }
  const I18NString& getString() const noexcept { return m_string; }
  /// 1 when the names are equal, else 0. Throws ZEBAssertError when `rArg` is null.
  int equals(const LOGLoggerKey* rArg) const;
  /// 1 when the object is a logger of this name, else 0. Throws ZEBAssertError when `rArg` is null.
  int equals(const LOGObject* rArg) const;

 private:
  LOGLoggerKey() = default;

  I18NString m_string;
  std::uint32_t m_hashCode = 0;
};

#endif
