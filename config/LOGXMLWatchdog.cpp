#include "config/LOGXMLWatchdog.h"

#include "config/LOGDOMConfigurator.h"
#include "core/LOGFailures.h"
#include "platform/ZEBFmDir.h"

LOGXMLWatchdog::LOGXMLWatchdog(const I18NString& fileName) : LOGFileWatchdog(fileName) {
  // The base has looked already, when this was not yet a LOGXMLWatchdog.
  if (hasSeenChange()) {
    LOGXMLWatchdog::doOnChange();
  }
}

LOGXMLWatchdog::~LOGXMLWatchdog() { stop(); }

void LOGXMLWatchdog::doOnChange() {
  int applied = 0;
  logContainingFailures(
      LOGFailureTexts::same("LOGXMLWatchdog::doOnChange -- some exception occurred"), [&] {
        // Whoever opens a pipe waits for a writer, and so would whoever stops the watchdog.
        if (ZEBFmDir::isDevice(getFileName()) != 0) {
          LOGLogLog::error("Could not parse the document");
          LOGLogLog::error(getFileName() + ": a pipe or a device is not watched");
        } else {
          applied = LOGDOMConfigurator::configure(getFileName());
        }
      });
  m_applied = applied;
}
