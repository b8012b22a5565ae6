#include "AuditLogger.h"

AuditLogger::AuditLogger(const I18NString& name) : LOGLogger(name) {
  AuditLogger::setLevel(nullptr);
}

void AuditLogger::setLevel(LOGLevel* level) {
  const bool isLowEnough = level != nullptr && level->toInt() <= LOGLevel::INFO_RANK;
  LOGLogger::setLevel(isLowEnough ? level : LOGLevel::toLevel(LOGLevel::INFO_RANK));
}
