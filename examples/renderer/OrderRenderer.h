#ifndef RENDERER_ORDERRENDERER_H
#define RENDERER_ORDERRENDERER_H

#include "rendering/LOGObjectRenderer.h"

/// Writes an order with its articles.
class OrderRenderer : public LOGObjectRenderer {
 public:
  I18NString* doRender(LOGObject* object) override;
};

#endif
