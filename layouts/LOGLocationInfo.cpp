#include "layouts/LOGLocationInfo.h"

const I18NString LOGLocationInfo::m_NA = "?";

LOGLocationInfo::LOGLocationInfo(const I18NString&) {}

const I18NString& LOGLocationInfo::getClassName() const { return m_NA; }

const I18NString& LOGLocationInfo::getFileName() const { return m_NA; }

const I18NString& LOGLocationInfo::getLineNumber() const { return m_NA; }

const I18NString& LOGLocationInfo::getMethodName() const { return m_NA; }

const I18NString& LOGLocationInfo::getFullInfo() const { return I18NString::none(); }
