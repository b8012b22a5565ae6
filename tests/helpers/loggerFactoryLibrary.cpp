// A library that a document loads for its loggers.

#include "core/LOGLogger.h"
#include "core/LOGLoggerFactory.h"

namespace {

class LoudLogger : public LOGLogger {
 public:
  explicit LoudLogger(const I18NString& name) : LOGLogger(name + "!") {}
};

class LoudFactory : public LOGLoggerFactory {
 public:
  LOGLogger* makeNewLoggerInstance(const I18NString& name) override { return new LoudLogger(name); }
};

}  // namespace

extern "C" LOG4ZEB_LIBRARY_EXPORT LOGLoggerFactory* getLoggerFactory() {
  static LoudFactory factory;
  return &factory;
}
