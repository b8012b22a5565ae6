#include "config/LOGXMLWatchdog.h"

#include "config/LOGDOMConfigurator.h"

LOGXMLWatchdog::LOGXMLWatchdog(const I18NString& fileName) : LOGFileWatchdog(fileName) {
  // The base has looked already, when this was not yet a LOGXMLWatchdog.
  if (hasSeenChange()) {
    LOGXMLWatchdog::doOnChange();
  }
}

LOGXMLWatchdog::~LOGXMLWatchdog() { stop(); }

void LOGXMLWatchdog::doOnChange() { m_applied = LOGDOMConfigurator::configure(getFileName()); }
