#include "core/LOGOptionHandler.h"

LOGOptionHandler::~LOGOptionHandler() = default;
