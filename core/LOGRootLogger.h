#ifndef CORE_LOGROOTLOGGER_H
#define CORE_LOGROOTLOGGER_H

#include "core/LOGLogger.h"

/// The top of a hierarchy. It starts with a level, and unlike other loggers it can be cloned. A
/// later setLevel(nullptr) is accepted, on purpose: then no logger that inherits logs anything.
class LOG4ZEB_EXPORT LOGRootLogger : public LOGLogger {
 public:
  /// A null level means DEBUG.
  explicit LOGRootLogger(LOGLevel* level);
  LOGRootLogger(const LOGRootLogger& other);
  ~LOGRootLogger() override;

  /// The root's own level.
  LOGLevel* getChainedLevel() const;
  /// A new root logger, owned by the caller. Throws ZEBOutOfMemoryError.
  LOGObject* clone() const override;
};

#endif
