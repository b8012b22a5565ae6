#include "platform/ZEBSystemError.h"

#include <system_error>

ZEBSystemError::ZEBSystemError(const I18NString& objectName, int errorCode, const char* source,
                               int line)
    : ZEBThrowable(objectName + ": " + std::system_category().message(errorCode), source, line),
      m_objectName(objectName),
      m_errorCode(errorCode) {}

ZEBSystemError::~ZEBSystemError() = default;

void ZEBSystemError::raise() const { throw *this; }
