#include "OrderRenderer.h"

#include <memory>

#include "Order.h"

I18NString* OrderRenderer::doRender(LOGObject* object) {
  auto text = std::make_unique<I18NString>(object->toString());
  // Any object may have been given the tag.
  if (const auto* const order = dynamic_cast<const Order*>(object)) {
    const char* separator = " of ";
    for (const std::string& article : order->articles()) {
      *text += separator + article;
      separator = ", ";
    }
  }
  return text.release();
}
