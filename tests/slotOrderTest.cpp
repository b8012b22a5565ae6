// The order of the virtual operations of the public classes, which the code of a program calls by
// their place.

#include <gtest/gtest.h>

#include <cstddef>
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

#define SLOT(name) slotOf(&C::name, #name)
#define OVERLOAD(name, ...) slotOf<__VA_ARGS__, C>(&C::name, #name " " #__VA_ARGS__)
#define ROW(Class, first, ...)                \
  [] {                                        \
    using C = Class;                          \
    return Row{#Class, first, {__VA_ARGS__}}; \
  }()

std::vector<Row> rows() {
  using Text = const I18NString&;
  return {
      ROW(LOGObject, 2, SLOT(operator==), SLOT(operator!=), SLOT(toString), SLOT(clone)),
      ROW(LOGOptionHandler, 2, SLOT(activateOptions)),
      ROW(LOGLogger, 2, SLOT(setLevel)),
      ROW(LOGLoggerRepository, 2, SLOT(isDisabled), OVERLOAD(setThreshold, void(Text)),
          OVERLOAD(setThreshold, void(LOGLevel*)), SLOT(emitNoAppenderWarning), SLOT(getThreshold),
          OVERLOAD(getLogger, LOGLogger * (Text, LOGLoggerFactory*)),
          OVERLOAD(getLogger, LOGLogger * (Text)), SLOT(getRootLogger), SLOT(exists),
          SLOT(shutdown), SLOT(getCurrentLoggers), SLOT(fireAddAppenderEvent),
          SLOT(resetConfiguration)),
      ROW(LOGRendererSupport, 2, SLOT(getRendererMap),
          OVERLOAD(setRenderer, void(Text, LOGObjectRenderer*)),
          OVERLOAD(setRenderer, void(LOGObject*, LOGObjectRenderer*))),
      ROW(LOGLoggerFactory, 2, SLOT(makeNewLoggerInstance)),
      ROW(LOGHierarchyEventListener, 2, SLOT(addAppenderEvent), SLOT(removeAppenderEvent)),
      ROW(LOGRepositorySelector, 2, SLOT(getLoggerRepository)),
      ROW(LOGObjectRenderer, 2, SLOT(doRender)),
      ROW(LOGConfigurator, 2, SLOT(doConfigure)),
      ROW(LOGAppender, 2, SLOT(addFilter), SLOT(clearFilters), SLOT(close), SLOT(doAppend),
          SLOT(getName), SLOT(setErrorHandler), SLOT(getErrorHandler), SLOT(setLayout),
          SLOT(getLayout), SLOT(setName), SLOT(requiresLayout)),
      ROW(LOGAppenderSkeleton, 2, SLOT(activateOptions), SLOT(append)),
      ROW(LOGWriterAppender, 0, SLOT(checkEntryConditions), SLOT(closeWriter), SLOT(subappend),
          SLOT(resetWriter)),
      ROW(LOGFileAppender, 0, OVERLOAD(setFile, void(Text, int, int, int)), SLOT(setQWForFiles),
          SLOT(setFileOptions)),
      ROW(LOGConsoleAppender, 0, SLOT(setQWForFiles)),
      ROW(LOGAppenderAttachable, 2, SLOT(addAppender), SLOT(getAllAppenders), SLOT(getAppender),
          SLOT(isAttached), SLOT(removeAllAppenders), OVERLOAD(removeAppender, void(Text)),
          OVERLOAD(removeAppender, void(LOGAppenderSkeleton*))),
      ROW(LOGErrorHandler, 2, SLOT(activateOptions), SLOT(setLogger),
          OVERLOAD(error, void(Text, ZEBThrowable&, int, LOGLoggingEvent*)),
          OVERLOAD(error, void(Text, ZEBThrowable&, int)), OVERLOAD(error, void(Text)),
          SLOT(setAppender), SLOT(setBackupAppender)),
      ROW(LOGQuietWriter, 0, OVERLOAD(write, void(Text)), OVERLOAD(write, void(ZEBFmFile*, Text)),
          SLOT(stWrite)),
      ROW(LOGWriter, 2, SLOT(write), SLOT(flush)),
      ROW(LOGLayout, 2, SLOT(activateOptions), SLOT(format), SLOT(getContentType), SLOT(getHeader),
          SLOT(getFooter), SLOT(ignoresThrowable)),
      ROW(LOGDateLayout, 8, SLOT(setOption), SLOT(getDateFormat), SLOT(setTimeZone),
          SLOT(getTimeZone), SLOT(dateFormat), OVERLOAD(setDateFormat, void(Text, LOGTimeZone*)),
          OVERLOAD(setDateFormat, void(Text))),
      ROW(LOGTTCCLayout, 15, SLOT(setThreadPrinting), SLOT(getThreadPrinting),
          SLOT(setLoggerPrefixing), SLOT(getLoggerPrefixing), SLOT(setContextPrinting),
          SLOT(getContextPrinting)),
      ROW(LOGPatternParser, 2, SLOT(finalizeConverter), SLOT(addConverter), SLOT(extractOption),
          SLOT(extractPrecisionOption)),
      ROW(LOGPatternConverter, 2, SLOT(convert), SLOT(format), SLOT(spacePad), SLOT(getNext)),
      ROW(LOGNamedPatternConverter, 6, SLOT(getFullyQualifiedName)),
      ROW(LOGDateFormat, 2, SLOT(format), SLOT(parse)),
      ROW(LOGFilter, 2, SLOT(activateOptions), SLOT(decide)),
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
    const std::size_t first = row.first == 0 ? row.slots.front().number : row.first;
    for (std::size_t i = 0; i < row.slots.size(); ++i) {
      EXPECT_EQ(row.slots[i].number, first + i) << row.name << "::" << row.slots[i].name;
    }
  }
}
