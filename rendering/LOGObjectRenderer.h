#ifndef RENDERING_LOGOBJECTRENDERER_H
#define RENDERING_LOGOBJECTRENDERER_H

#include "platform/I18NString.h"

class LOGObject;

/// Turns message objects of one class into text.
class LOG4ZEB_EXPORT LOGObjectRenderer {
 public:
  virtual ~LOGObjectRenderer();
  /// The text in a new string that the caller deletes, or null. Called by the threads that log,
  /// by several at once.
  virtual I18NString* doRender(LOGObject* object) = 0;
};

#endif
