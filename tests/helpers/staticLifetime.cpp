// Logs before main, in main and after it, from static objects, through a buffered file. The one
// argument is the file's name. Nothing is ever closed: the end of the process writes the file.

#include "appenders/LOGFileAppender.h"
#include "layouts/LOGLayout.h"
#include "log4zeb.h"

namespace {

class LogsAllItsLife {
 public:
  LogsAllItsLife() { LOG4ZEB_INFO(LOGManager::getLogger("static"), "before a file is there"); }
  ~LogsAllItsLife() {
    LOGNDC::push("late");
    LOG4ZEB_INFO(LOGManager::getLogger("static"), "destructor " << LOGNDC::get());
    LOGNDC::pop();
  }
};

const LogsAllItsLife BEFORE_AND_AFTER_MAIN;

}  // namespace

int main(int, char** arguments) {
  LOGNDC::push("main");
  LOGManager::getRootLogger()->addAppender(
      new LOGFileAppender(new LOGLayout, arguments[1], 1, 1, 1 << 16));
  LOG4ZEB_INFO(LOGManager::getLogger("static"), "in " << LOGNDC::get());
  return 0;
}
