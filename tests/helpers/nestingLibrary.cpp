// A library for loggers and renderers that reads further documents and shuts down whenever it is
// called.

#include "config/LOG4ZEBConfigurator.h"
#include "config/LOGDOMConfigurator.h"
#include "config/LOGXMLWatchdog.h"
#include "core/LOGLogger.h"
#include "core/LOGLoggerFactory.h"
#include "core/LOGManager.h"
#include "core/LOGObject.h"
#include "platform/ZEBIDOM_DOMImplementation.h"
#include "platform/ZEBIDOM_Document.h"
#include "platform/ZEBIDOM_Element.h"
#include "platform/ZEBIDOM_Parser.h"
#include "rendering/LOGObjectRenderer.h"

namespace {

constexpr const char* DOCUMENT = "nested.xml";

void readAndShutDown() {
  LOG4ZEBConfigurator::initialize(DOCUMENT);
  LOGDOMConfigurator::configureWithProcID(DOCUMENT);
  const LOGXMLWatchdog watchdog(DOCUMENT);
  ZEBIDOM_Document document = ZEBIDOM_DOMImplementation::getInstance().createDocument();
  ZEBIDOM_Parser(0).parse(DOCUMENT, document);
  LOGDOMConfigurator::configure(document.getDocumentElement());
  LOGManager::resetConfiguration();
  LOG4ZEBConfigurator::shutdown();
}

class Nesting {
 public:
  Nesting() { readAndShutDown(); }
};

const Nesting WHILE_THE_LIBRARY_IS_LOADED;

class NestingFactory : public LOGLoggerFactory {
 public:
  LOGLogger* makeNewLoggerInstance(const I18NString& name) override {
    readAndShutDown();
    class Made : public LOGLogger {
     public:
      explicit Made(const I18NString& name) : LOGLogger(name) {}
    };
    return new Made(name);
  }
};

class NestingRenderer : public LOGObjectRenderer {
 public:
  NestingRenderer() { readAndShutDown(); }
  I18NString* doRender(LOGObject* object) override {
    return new I18NString("dyed order " + object->toString());
  }
};

}  // namespace

extern "C" LOG4ZEB_LIBRARY_EXPORT LOGLoggerFactory* getLoggerFactory() {
  static NestingFactory factory;
  readAndShutDown();
  return &factory;
}

extern "C" LOG4ZEB_LIBRARY_EXPORT LOGObjectRenderer* getRenderer() { return new NestingRenderer; }
