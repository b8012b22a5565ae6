#include "platform/ZEBSystemError.h"

ZEBSystemError::ZEBSystemError(const I18NString& objectName, int errorCode, const char* source,
                               int line)
    : ZEBSystemError(objectName, std::error_code(errorCode, std::system_category()), source, line) {
}

ZEBSystemError::ZEBSystemError(const I18NString& objectName, const std::error_code& error,
                               const char* source, int line)
    : ZEBThrowable(objectName + ": " + error.message(), source, line),
      m_objectName(objectName),
      m_errorCode(error.value()) {}

ZEBSystemError::~ZEBSystemError() = default;
