// The order of the virtual operations of the public classes, which the code of a program calls by
// their place.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "appenders/LOGConsoleAppender.h"
#include "appenders/LOGCountingQuietWriter.h"
#include "appenders/LOGOnlyOnceErrorHandler.h"
#include "appenders/LOGRollingFileAppender.h"
#include "appenders/LOGWriter.h"
#include "config/LOG4ZEBConfigurator.h"
#include "config/LOGConfigurator.h"
#include "core/LOGHashtable.h"
#include "core/LOGHierarchyEventListener.h"
#include "core/LOGLoggerFactory.h"
#include "core/LOGLoggerRepository.h"
#include "core/LOGLoggingEvent.h"
#include "core/LOGRepositorySelector.h"
#include "core/LOGRootLogger.h"
#include "filters/LOGFilter.h"
#include "layouts/LOGDateFormat.h"
#include "layouts/LOGHTMLLayout.h"
#include "layouts/LOGLoggerPatternConverter.h"
#include "layouts/LOGPatternLayout.h"
#include "layouts/LOGPatternParser.h"
#include "layouts/LOGTTCCLayout.h"
#include "layouts/LOGXMLLayout.h"
#include "net/LOGSyslogQuietWriter.h"
#include "rendering/LOGObjectRenderer.h"
#include "rendering/LOGRendererSupport.h"

namespace {

struct Slot {
  std::size_t number;
  std::string name;
};

/// The place of a virtual operation in its class's first table, in which a destructor has two. A
/// pointer to it holds the offset there plus 1 or, where functions may have odd addresses, the
/// offset itself.
template <typename Function, typename Class>
Slot slotOf(Function Class::*operation, const char* name) {
  std::ptrdiff_t words[2];
  static_assert(sizeof operation == sizeof words);
  std::memcpy(words, &operation, sizeof words);
  return {(static_cast<std::size_t>(words[0]) & ~std::size_t{1}) / sizeof(void*), name};
}

/// What a class adds to the tables of its bases, in the order in which it has to stand there, one
/// behind the other.
struct Row {
  const char* name;
  std::size_t first;
  std::vector<Slot> slots;
};

#define SLOT(Class, name) slotOf(&Class::name, #name)
#define OVERLOAD(Class, name, ...) slotOf<__VA_ARGS__, Class>(&Class::name, #name " " #__VA_ARGS__)

std::vector<Row> rows() {
  using Text = const I18NString&;
  return {
      {"LOGObject",
       2,
       {SLOT(LOGObject, operator==), SLOT(LOGObject, operator!=), SLOT(LOGObject, toString),
        SLOT(LOGObject, clone)}},
      {"LOGOptionHandler", 2, {SLOT(LOGOptionHandler, activateOptions)}},
      {"LOGLogger", 2, {SLOT(LOGLogger, setLevel)}},
      {"LOGLoggerRepository",
       2,
       {SLOT(LOGLoggerRepository, isDisabled),
        OVERLOAD(LOGLoggerRepository, setThreshold, void(Text)),
        OVERLOAD(LOGLoggerRepository, setThreshold, void(LOGLevel*)),
        SLOT(LOGLoggerRepository, emitNoAppenderWarning), SLOT(LOGLoggerRepository, getThreshold),
        OVERLOAD(LOGLoggerRepository, getLogger, LOGLogger * (Text, LOGLoggerFactory*)),
        OVERLOAD(LOGLoggerRepository, getLogger, LOGLogger * (Text)),
        SLOT(LOGLoggerRepository, getRootLogger), SLOT(LOGLoggerRepository, exists),
        SLOT(LOGLoggerRepository, shutdown), SLOT(LOGLoggerRepository, getCurrentLoggers),
        SLOT(LOGLoggerRepository, fireAddAppenderEvent),
        SLOT(LOGLoggerRepository, resetConfiguration)}},
      {"LOGRendererSupport",
       2,
       {SLOT(LOGRendererSupport, getRendererMap),
        OVERLOAD(LOGRendererSupport, setRenderer, void(Text, LOGObjectRenderer*)),
        OVERLOAD(LOGRendererSupport, setRenderer, void(LOGObject*, LOGObjectRenderer*))}},
      {"LOGLoggerFactory", 2, {SLOT(LOGLoggerFactory, makeNewLoggerInstance)}},
      {"LOGHierarchyEventListener",
       2,
       {SLOT(LOGHierarchyEventListener, addAppenderEvent),
        SLOT(LOGHierarchyEventListener, removeAppenderEvent)}},
      {"LOGRepositorySelector", 2, {SLOT(LOGRepositorySelector, getLoggerRepository)}},
      {"LOGObjectRenderer", 2, {SLOT(LOGObjectRenderer, doRender)}},
      {"LOGConfigurator", 2, {SLOT(LOGConfigurator, doConfigure)}},
      {"LOGAppender",
       2,
       {SLOT(LOGAppender, addFilter), SLOT(LOGAppender, clearFilters), SLOT(LOGAppender, close),
        SLOT(LOGAppender, doAppend), SLOT(LOGAppender, getName), SLOT(LOGAppender, setErrorHandler),
        SLOT(LOGAppender, getErrorHandler), SLOT(LOGAppender, setLayout),
        SLOT(LOGAppender, getLayout), SLOT(LOGAppender, setName),
        SLOT(LOGAppender, requiresLayout)}},
      {"LOGAppenderSkeleton",
       2,
       {SLOT(LOGAppenderSkeleton, activateOptions), SLOT(LOGAppenderSkeleton, append)}},
      {"LOGWriterAppender",
       0,
       {SLOT(LOGWriterAppender, checkEntryConditions), SLOT(LOGWriterAppender, closeWriter),
        SLOT(LOGWriterAppender, subappend), SLOT(LOGWriterAppender, resetWriter)}},
      {"LOGFileAppender",
       0,
       {OVERLOAD(LOGFileAppender, setFile, void(Text, int, int, int)),
        SLOT(LOGFileAppender, setQWForFiles), SLOT(LOGFileAppender, setFileOptions)}},
      {"LOGConsoleAppender", 0, {SLOT(LOGConsoleAppender, setQWForFiles)}},
      {"LOGAppenderAttachable",
       2,
       {SLOT(LOGAppenderAttachable, addAppender), SLOT(LOGAppenderAttachable, getAllAppenders),
        SLOT(LOGAppenderAttachable, getAppender), SLOT(LOGAppenderAttachable, isAttached),
        SLOT(LOGAppenderAttachable, removeAllAppenders),
        OVERLOAD(LOGAppenderAttachable, removeAppender, void(Text)),
        OVERLOAD(LOGAppenderAttachable, removeAppender, void(LOGAppenderSkeleton*))}},
      {"LOGErrorHandler",
       2,
       {SLOT(LOGErrorHandler, activateOptions), SLOT(LOGErrorHandler, setLogger),
        OVERLOAD(LOGErrorHandler, error, void(Text, ZEBThrowable&, int, LOGLoggingEvent*)),
        OVERLOAD(LOGErrorHandler, error, void(Text, ZEBThrowable&, int)),
        OVERLOAD(LOGErrorHandler, error, void(Text)), SLOT(LOGErrorHandler, setAppender),
        SLOT(LOGErrorHandler, setBackupAppender)}},
      {"LOGQuietWriter",
       0,
       {OVERLOAD(LOGQuietWriter, write, void(Text)),
        OVERLOAD(LOGQuietWriter, write, void(ZEBFmFile*, Text)), SLOT(LOGQuietWriter, stWrite)}},
      {"LOGWriter", 2, {SLOT(LOGWriter, write), SLOT(LOGWriter, flush)}},
      {"LOGLayout",
       2,
       {SLOT(LOGLayout, activateOptions), SLOT(LOGLayout, format), SLOT(LOGLayout, getContentType),
        SLOT(LOGLayout, getHeader), SLOT(LOGLayout, getFooter), SLOT(LOGLayout, ignoresThrowable)}},
      {"LOGDateLayout",
       8,
       {SLOT(LOGDateLayout, setOption), SLOT(LOGDateLayout, getDateFormat),
        SLOT(LOGDateLayout, setTimeZone), SLOT(LOGDateLayout, getTimeZone),
        SLOT(LOGDateLayout, dateFormat),
        OVERLOAD(LOGDateLayout, setDateFormat, void(Text, LOGTimeZone*)),
        OVERLOAD(LOGDateLayout, setDateFormat, void(Text))}},
      {"LOGTTCCLayout",
       15,
       {SLOT(LOGTTCCLayout, setThreadPrinting), SLOT(LOGTTCCLayout, getThreadPrinting),
        SLOT(LOGTTCCLayout, setLoggerPrefixing), SLOT(LOGTTCCLayout, getLoggerPrefixing),
        SLOT(LOGTTCCLayout, setContextPrinting), SLOT(LOGTTCCLayout, getContextPrinting)}},
      {"LOGPatternParser",
       2,
       {SLOT(LOGPatternParser, finalizeConverter), SLOT(LOGPatternParser, addConverter),
        SLOT(LOGPatternParser, extractOption), SLOT(LOGPatternParser, extractPrecisionOption)}},
      {"LOGPatternConverter",
       2,
       {SLOT(LOGPatternConverter, convert), SLOT(LOGPatternConverter, format),
        SLOT(LOGPatternConverter, spacePad), SLOT(LOGPatternConverter, getNext)}},
      {"LOGNamedPatternConverter", 6, {SLOT(LOGNamedPatternConverter, getFullyQualifiedName)}},
      {"LOGDateFormat", 2, {SLOT(LOGDateFormat, format), SLOT(LOGDateFormat, parse)}},
      {"LOGFilter", 2, {SLOT(LOGFilter, activateOptions), SLOT(LOGFilter, decide)}},
  };
}

template <typename... Classes>
constexpr bool haveVirtualDestructors = (std::has_virtual_destructor_v<Classes> && ...);

// These have no other virtual operations.
static_assert(haveVirtualDestructors<LOGLevel, LOGLoggerKey, LOGHashtable, LOGSerializable,
                                     LOGLoggingEvent, LOGMutex, LOG4ZEBConfigurator>);

}  // namespace

TEST(SlotOrder, IsTheOneThatProgramsAreBuiltWith) {
  for (const Row& row : rows()) {
    std::printf("%s:", row.name);
    const std::size_t first = row.first == 0 ? row.slots.front().number : row.first;
    for (std::size_t i = 0; i < row.slots.size(); ++i) {
      std::printf(" %zu %s", row.slots[i].number, row.slots[i].name.c_str());
      EXPECT_EQ(row.slots[i].number, first + i) << row.name << "::" << row.slots[i].name;
    }
    std::printf("\n");
  }
}
