#ifndef APPENDERS_LOGAPPENDERCLAIM_H
#define APPENDERS_LOGAPPENDERCLAIM_H

#include "appenders/LOGAppenderPin.h"
#include "platform/I18NString.h"

class LOGAppenderAttachable;
class LOGAppenderSkeleton;

/// The right to use an appender of the program later, after it has left a list: to close it when
/// the document that replaces it has been read. The program revokes it by removing the appender,
/// from the list that it was in or from another one, or by deleting it.
class LOGAppenderClaim {
 public:
  /// REQUIRES: the appender is in `list`, which cannot change now.
  LOGAppenderClaim(const LOGAppenderAttachable& list, LOGAppenderSkeleton& appender);
  LOGAppenderClaim(const LOGAppenderClaim&) = delete;
  LOGAppenderClaim& operator=(const LOGAppenderClaim&) = delete;
  ~LOGAppenderClaim();

  /// Calls `operation` with the appender, which cannot be deleted meanwhile, unless the claim was
  /// revoked.
  template <typename Operation>
  void use(Operation operation) const {
    LOGAppenderPin pin;
    if (pinUnlessRevoked(pin)) {
      operation(*m_appender);
    }
  }

  /// Revoke claims: on an appender, from whichever list it was; on what a list had under that name,
  /// which returns whether there was one; on all that it had.
  static void revoke(const LOGAppenderSkeleton* appender) noexcept;
  static bool revokeNamed(const LOGAppenderAttachable& list, const I18NString& name) noexcept;
  static void revokeAll(const LOGAppenderAttachable& list) noexcept;

 private:
  bool pinUnlessRevoked(LOGAppenderPin& pin) const;
  template <typename Condition>
  static bool revokeIf(Condition condition) noexcept;

  const LOGAppenderAttachable& m_list;
  LOGAppenderSkeleton* const m_appender;
  // Guarded by the lock of all claims.
  bool m_isRevoked = false;
  LOGAppenderClaim* m_previous = nullptr;
  LOGAppenderClaim* m_next = nullptr;
};

#endif
