#ifndef RENDERING_LOGRENDERERSUPPORT_H
#define RENDERING_LOGRENDERERSUPPORT_H

#include "platform/I18NString.h"

class LOGObject;
class LOGObjectRenderer;
class LOGRendererMap;

/// The side of a repository that knows how message objects become text.
class LOG4ZEB_EXPORT LOGRendererSupport {
 public:
  virtual ~LOGRendererSupport();
  virtual LOGRendererMap* getRendererMap() = 0;
  /// Renders objects whose tag is `className` with `renderer`, which the map owns from now on.
  virtual void setRenderer(const I18NString& className, LOGObjectRenderer* renderer) = 0;
  /// The same for the tag of `object`.
  virtual void setRenderer(LOGObject* object, LOGObjectRenderer* renderer) = 0;
};

#endif
