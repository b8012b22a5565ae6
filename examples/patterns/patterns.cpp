// Prints conversion patterns, each beside what it makes of one event, in which CR LF is shown as
// "\r\n".
//
//   patterns

#include <iomanip>
#include <iostream>
#include <string>

#include "core/LOGLoggingEvent.h"
#include "layouts/LOGPatternLayout.h"
#include "log4zeb.h"

namespace {

std::string shown(std::string text) {
  for (std::size_t at = 0; (at = text.find("\r\n", at)) != std::string::npos;) {
    text.replace(at, 2, "\\r\\n");
  }
  return text;
}

void show(const std::string& pattern, LOGLayout& layout, LOGLoggingEvent& event) {
  std::cout << std::left << std::setw(34) << pattern << shown(layout.format(&event).toStdString())
            << '\n';
}

void show(const std::string& pattern, LOGLoggingEvent& event) {
  LOGPatternLayout layout(pattern);
  show(pattern, layout, event);
}

}  // namespace

int main() {
  LOG4ZEB_NDC_SCOPE("request 42");
  LOG4ZEB_NDC_SCOPE("payment");
  LOGObject message(I18NString("paid"));
  LOGLoggingEvent event("", LOGManager::getLogger("shop.orders.db"),
                        LOGLevel::toLevel(LOGLevel::WARN_RANK), &message);

  std::cout << "Parts of the event\n";
  for (const char* const pattern :
       {"%m", "%p", "%c", "%c{1}", "%c{2}", "%c{9}", "[%t]", "%x", "%p %c - %m%n", "100%% %m"}) {
    show(pattern, event);
  }

  std::cout << "\nDates\n";
  for (const char* const pattern : {"%d", "%d{ISO8601}", "%d{ABSOLUTE}", "%d{DATE}",
                                    "%d{HH:mm:ss,SSS}", "%d{dd MMM yyyy HH:mm:ss,SSS}"}) {
    show(pattern, event);
  }

  std::cout << "\nWhat is not recorded\n";
  for (const char* const pattern : {"%F", "%L", "%M", "%C", "[%l]", "[%X{user}]"}) {
    show(pattern, event);
  }

  std::cout << "\nWidths\n";
  for (const char* const pattern : {"[%8m]", "[%-8m]", "[%.2m]", "[%8.2m]", "[%p] [%8m]",
                                    "[%8p] [%m]", "[%-20p] [%-8m]", "[%-8m] the text stays"}) {
    show(pattern, event);
  }

  std::cout << "\nA layout before and after another pattern was read\n";
  LOGPatternLayout layout("[%p] [%m]");
  show("[%p] [%m]", layout, event);
  LOGPatternLayout other("%-8m");
  show("[%p] [%m]", layout, event);
  return 0;
}
