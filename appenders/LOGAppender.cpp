#include "appenders/LOGAppender.h"

LOGAppender::~LOGAppender() = default;
