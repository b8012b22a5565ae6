#include "core/LOGRootLogger.h"

#include "platform/ZEBTranslate.h"

LOGRootLogger::LOGRootLogger(LOGLevel* level) : LOGLogger("root") {
  LOGLogger::setLevel(level == nullptr ? LOGLevel::toLevel(LOGLevel::DEBUG_RANK) : level);
}

LOGRootLogger::LOGRootLogger(const LOGRootLogger&) = default;
LOGRootLogger::~LOGRootLogger() = default;

LOGLevel* LOGRootLogger::getChainedLevel() const { return const_cast<LOGLevel*>(getLevel()); }

LOGObject* LOGRootLogger::clone() const {
  return zebTranslate("LOGRootLogger", 69, [this] { return new LOGRootLogger(*this); });
}
