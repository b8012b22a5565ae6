#ifndef CORE_LOGNDCSCOPE_H
#define CORE_LOGNDCSCOPE_H

#include "core/LOGNDC.h"

/// A message in the calling thread's diagnostic context for as long as the object lives. At its end
/// the context is as deep as before, also after an exception and when what ran meanwhile pushed
/// without popping. To be destroyed by the thread that made it.
class LOGNDCScope {
 public:
  /// Throws what LOGNDC::push() throws; then nothing was pushed.
  explicit LOGNDCScope(const I18NString& message) : m_depth(LOGNDC::getDepth()) {
    LOGNDC::push(message);
  }
  LOGNDCScope(const LOGNDCScope&) = delete;
  LOGNDCScope& operator=(const LOGNDCScope&) = delete;
  ~LOGNDCScope() { LOGNDC::setMaxDepth(m_depth); }

 private:
  const int m_depth;
};

#endif
