#include "appenders/LOGAppenderAttachable.h"

LOGAppenderAttachable::~LOGAppenderAttachable() = default;
