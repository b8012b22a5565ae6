#include "core/LOGSerializable.h"

LOGSerializable::~LOGSerializable() = default;
