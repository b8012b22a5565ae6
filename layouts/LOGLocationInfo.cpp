#include "layouts/LOGLocationInfo.h"

const I18NString LOGLocationInfo::m_NA = "?";
