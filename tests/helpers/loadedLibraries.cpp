// Applies the document "loaded.xml" twice, logs a plain and a tagged message through the logger
// "made", whose class the document takes from a library, and shuts down.

#include "log4zeb.h"

int main() {
  for (int i = 0; i < 2; ++i) {
    if (LOG4ZEBConfigurator::initialize("loaded.xml") == 0) {
      return 1;
    }
    LOGLogger* const logger = LOGManager::exists("made");
    logger->info("denied, for it is not dyed");
    logger->info("dyed text");
    LOGObject order(I18NString("7"));
    order.instance("Order");
    logger->info(&order);
  }
  LOG4ZEBConfigurator::shutdown();
  return 0;
}
