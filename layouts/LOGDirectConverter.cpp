#include "layouts/LOGDirectConverter.h"

LOGDirectConverter::~LOGDirectConverter() = default;
