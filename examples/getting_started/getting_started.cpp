// What a program uses every day: loggers by name, macros, a diagnostic context, exceptions.
//
//   getting_started DOCUMENT

#include "log4zeb.h"

#include <iostream>
#include <stdexcept>
#include <string>

namespace {

// A logger lives as long as the process: asked for once, kept, used by any thread.
LOGLogger* const orders = LOGManager::getLogger("shop.orders");
LOGLogger* const payment = LOGManager::getLogger("shop.orders.payment");

void pay(int order) {
  LOG4ZEB_DEBUG(payment, "asks the bank for " << order * 10 << " euros");
  if (order == 2) {
    throw std::runtime_error("the card is out of date");
  }
}

void handle(int order) {
  LOG4ZEB_NDC_SCOPE("order " + std::to_string(order));
  orders->info("came in");
  try {
    pay(order);
    LOG4ZEB_INFO(orders, "paid, " << order * 10 << " euros");
  } catch (const std::exception& failure) {
    LOG4ZEB_ERROR_EX(orders, "not paid: " << failure.what(), failure);
  }
  orders->debug("is done");
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount != 2 || LOG4ZEBConfigurator::initialize(arguments[1]) == 0) {
    std::cerr << "usage: getting_started DOCUMENT, where DOCUMENT is a configuration document\n";
    return 1;
  }
  for (int order = 1; order <= 2; ++order) {
    handle(order);
  }
  LOG4ZEBConfigurator::shutdown();
  return 0;
}
