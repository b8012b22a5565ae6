#ifndef CORE_LOGSTACK_H
#define CORE_LOGSTACK_H

#include <memory>
#include <vector>

#include "core/LOGDiagnosticContext.h"
#include "core/LOGMutex.h"
#include "core/LOGObject.h"

/// A thread's stack of diagnostic contexts. It owns its entries; its text is the key of the thread
/// that it was made for. Used by one thread at a time.
class LOG4ZEB_EXPORT LOGStack : public LOGObject, public LOGMutex {
 public:
  LOGStack() : LOGStack(I18NString()) {}
  explicit LOGStack(const I18NString& threadKey);
  /// A stack for another thread with copies of the same entries.
  LOGStack(const I18NString& threadKey, const LOGStack& other);
  LOGStack(const LOGStack& other);
  LOGStack& operator=(const LOGStack&) = delete;

  void push(std::unique_ptr<LOGDiagnosticContext> entry);
  /// Removes and returns the top entry, null when the stack is empty.
  std::unique_ptr<LOGDiagnosticContext> pop();
  /// The top entry, null when the stack is empty.
  const LOGDiagnosticContext* peek() const;
  int isEmpty() const { return m_entries.empty() ? 1 : 0; }
  int size() const { return static_cast<int>(m_entries.size()); }
  /// Drops the entries above the first `n`.
  void setSize(int n);

  LOGObject* clone() const override;

 private:
  std::vector<std::unique_ptr<LOGDiagnosticContext>> m_entries;
};

#endif
