// A library that a document loads to render one class of messages.

#include "core/LOGObject.h"
#include "rendering/LOGObjectRenderer.h"

namespace {

class OrderRenderer : public LOGObjectRenderer {
 public:
  I18NString* doRender(LOGObject* object) override {
    return new I18NString("dyed order " + object->toString());
  }
};

}  // namespace

extern "C" LOG4ZEB_LIBRARY_EXPORT LOGObjectRenderer* getRenderer() { return new OrderRenderer; }
