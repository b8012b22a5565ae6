#include "config/LOGConfigurator.h"

LOGConfigurator::~LOGConfigurator() = default;
