#include "rendering/LOGObjectRenderer.h"

LOGObjectRenderer::~LOGObjectRenderer() = default;
