#include "config/LOG4ZEBConfigurator.h"

#include "config/LOGDOMConfigurator.h"
#include "core/LOGFailures.h"
#include "core/LOGLogger.h"

LOG4ZEBConfigurator::~LOG4ZEBConfigurator() = default;

int LOG4ZEBConfigurator::initialize(const I18NString& path) {
  return LOGDOMConfigurator::configure(path);
}

void LOG4ZEBConfigurator::shutdown() {
  constexpr LOGFailureTexts TEXTS{
      "LOG4ZEBConfigurator::shutdown -- some i18nstring exception occurred",
      "LOG4ZEBConfigurator::shutdown -- some ZEBThrowable exception occurred",
      "LOG4ZEBConfigurator::shutdown -- An unknown exception has occurred."};
  bool isRefused = false;
  logContainingFailures(TEXTS, [&isRefused] {
    isRefused = !LOGDOMConfigurator::runExclusively([] {
      if (LOGLogger::getRootLogger() != nullptr) {
        LOGLogger::shutdown();
      }
    });
  });
  if (!isRefused) {
    LOGLogLog::shutdown();
  }
}
