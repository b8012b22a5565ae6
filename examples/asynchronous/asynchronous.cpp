// A queue in front of a file and in front of something slow: what a log call waits for, what
// flush() and shutdown() do, and what is lost without them.
//
//   asynchronous DOCUMENT

#include <fstream>
#include <iostream>
#include <string>

#include "SlowAppender.h"
#include "appenders/LOGAsyncAppender.h"
#include "log4zeb.h"

namespace {

int linesInFile() {
  std::ifstream file("logs/orders.log");
  int lines = 0;
  for (std::string line; std::getline(file, line);) {
    ++lines;
  }
  return lines;
}

void logOrders(LOGLogger* logger, int count) {
  for (int order = 1; order <= count; ++order) {
    LOG4ZEB_INFO(logger, "order " << order << " came in");
  }
}

bool showFile(LOGLogger* logger) {
  auto* const queue =
      dynamic_cast<LOGAsyncAppender*>(LOGManager::getRootLogger()->getAppender("QUEUE"));
  if (queue == nullptr) {
    return false;  // the document has no such appender at the root
  }
  queue->setBufferSize(1024);  // events, for the largest burst; 128 otherwise

  logOrders(logger, 10);
  const int isDelivered = queue->flush(10000);  // waits for at most so many milliseconds
  std::cout << "10 orders, flush() returned " << isDelivered << ": " << linesInFile()
            << " lines in the file\n";

  logOrders(logger, 5);
  LOG4ZEBConfigurator::shutdown();
  std::cout << "5 more, then shutdown(): " << linesInFile() << " lines in the file\n";
  return true;
}

const char* yesOrNo(bool isSo) { return isSo ? "yes" : "no"; }

void showWaiting() {
  LOGLogger* const logger = LOGManager::getLogger("slow");
  SlowAppender slow(5);
  LOGAsyncAppender queue;
  queue.addAppender(&slow);
  logger->addAppender(&queue);
  logger->setAdditivity(0);

  logOrders(logger, 100);
  std::cout << "100 calls returned before 100 were delivered: " << yesOrNo(slow.count() < 100)
            << '\n';
  logOrders(logger, 200);  // the queue holds 128, and one may be on its way out of it
  std::cout << "200 more waited for room in the queue: " << yesOrNo(slow.count() >= 160) << '\n';
  std::cout << "flush(1) returned " << queue.flush(1);
  std::cout << ", flush(10000) " << queue.flush(10000) << ": " << slow.count() << " delivered\n";

  slow.setMilliseconds(100);
  logOrders(logger, 100);
  logger->removeAppender(&queue);
  queue.close();  // drops what is queued
  std::cout << "100 more, then close(): some were lost: " << yesOrNo(slow.count() < 400) << '\n';
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount != 2 || LOG4ZEBConfigurator::initialize(arguments[1]) == 0) {
    std::cerr << "usage: asynchronous DOCUMENT, where DOCUMENT is a configuration document\n";
    return 1;
  }
  showWaiting();
  if (!showFile(LOGManager::getLogger("shop"))) {
    std::cerr << "asynchronous: the root logger has no asynchronous appender QUEUE\n";
    return 1;
  }
  return 0;
}
