#include "rendering/LOGRendererSupport.h"

LOGRendererSupport::~LOGRendererSupport() = default;
