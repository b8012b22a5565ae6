// Set up by the program, without a document: what a document cannot set, it can.

#include "log4zeb.h"

#include "appenders/LOGAsyncAppender.h"
#include "appenders/LOGConsoleAppender.h"
#include "appenders/LOGFileAppender.h"
#include "filters/LOGLevelRangeFilter.h"
#include "layouts/LOGPatternLayout.h"

int main() {
  // The library owns none of these: they have to live until the shutdown.
  LOGPatternLayout layout("%d{ABSOLUTE} %p %c - %m%n");

  LOGLevelRangeFilter warnings;
  warnings.setLevelMin(LOGLevel::toLevel("WARN"));
  LOGConsoleAppender console(&layout);
  console.setName("CONSOLE");
  console.addFilter(&warnings);

  LOGFileAppender file;
  file.setName("FILE");
  file.setLayout(&layout);
  file.setFile("logs/app.log");
  file.setBufferedIO(1);
  file.setBufferSize(65536);

  LOGAsyncAppender queue;
  queue.setName("QUEUE");
  queue.setBufferSize(8192);
  queue.addAppender(&file);

  LOGLogger* const root = LOGManager::getRootLogger();
  root->setLevel(LOGLevel::toLevel("INFO"));
  root->addAppender(&console);
  root->addAppender(&queue);

  LOGLogger* const logger = LOGManager::getLogger("app.db");
  logger->debug("nowhere");
  logger->info("in the file");
  logger->warn("in the file and on the console");

  LOG4ZEBConfigurator::shutdown();
  return 0;
}
