#include "rendering/LOGDefaultRenderer.h"

#include "core/LOGObject.h"
#include "platform/ZEBTranslate.h"

I18NString* LOGDefaultRenderer::doRender(LOGObject* object) {
  return zebTranslate("LOGDefaultRenderer", __LINE__, [object] {
    return object == nullptr ? nullptr : new I18NString(object->toString());
  });
}
