#include "core/LOGMutex.h"

LOGMutex::~LOGMutex() = default;
