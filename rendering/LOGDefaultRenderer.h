#ifndef RENDERING_LOGDEFAULTRENDERER_H
#define RENDERING_LOGDEFAULTRENDERER_H

#include "rendering/LOGObjectRenderer.h"

/// Renders an object as what its toString() says.
class LOG4ZEB_EXPORT LOGDefaultRenderer : public LOGObjectRenderer {
 public:
  I18NString* doRender(LOGObject* object) override;
};

#endif
