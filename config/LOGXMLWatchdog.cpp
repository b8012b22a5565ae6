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
        if (ZEBFmDir::exists(getFileName(), ZEBFmDir::FILE_OF_ANY_RIGHTS) != 0) {
          applied = LOGDOMConfigurator::configure(getFileName());
        } else {
          LOGLogLog::error("Could not parse the document");
          LOGLogLog::error(getFileName() + ": only a regular file is watched");
        }
      });
  m_applied = applied;
}
