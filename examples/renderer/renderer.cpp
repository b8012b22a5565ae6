// A message of a class of its own, and the renderer that makes text of it: the program's own with
// the word "own", or that of a library when the document names one. Without either the object's own
// text is written.
//
//   renderer DOCUMENT [own]

#include <iostream>

#include "Order.h"
#include "OrderRenderer.h"
#include "log4zeb.h"
#include "rendering/LOGRendererMap.h"

int main(int argumentCount, char** arguments) {
  if (argumentCount < 2 || LOG4ZEBConfigurator::initialize(arguments[1]) == 0) {
    std::cerr << "usage: renderer DOCUMENT [own], where DOCUMENT is a configuration document\n";
    return 1;
  }
  if (argumentCount == 3) {
    LOGRendererMap().put("Order", new OrderRenderer);  // the map's from now on
  }

  Order order(7, {"tea", "milk"});
  LOGManager::getLogger("shop.orders")->info(&order);

  LOG4ZEBConfigurator::shutdown();
  return 0;
}
