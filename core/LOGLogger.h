#ifndef CORE_LOGLOGGER_H
#define CORE_LOGLOGGER_H

#include <atomic>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "appenders/LOGAppenderAttachable.h"
#include "appenders/LOGAppenderAttachableImpl.h"
#include "core/LOGLevel.h"
#include "core/LOGMutex.h"
#include "core/LOGObject.h"
#include "platform/ZEBSharedPointer.h"

class LOGDefaultLoggerFactory;
class LOGHashtable;
class LOGLoggerFactory;
class LOGLoggerRepository;
class LOGLoggingEvent;

/// What application code logs through. A logger has a dotted name, lives in a repository that links
/// it to its parent, may have a level of its own, and hands each enabled request to its appenders
/// and, while additivity holds, to those of every ancestor. Loggers are made by the repository and
/// live as long as it.
///
/// Any thread may use a logger at any time. Its lock is held while its appenders run; no two
/// loggers' locks are ever held together.
class LOG4ZEB_EXPORT LOGLogger : public LOGMutex, public LOGAppenderAttachable, public LOGObject {
  friend class LOGDefaultLoggerFactory;

 public:
  ~LOGLogger() override;
  /// Takes a copy of `level`; null makes the logger inherit. Throws ZEBOutOfMemoryError.
  virtual void setLevel(LOGLevel* level);

  /// 1 when both are loggers of the same name, else 0.
  int operator==(const LOGObject& other) const override;
  int operator!=(const LOGObject& other) const override;
  // Forms for each pair of types, without which C++20 compares with the operands exchanged.
  int operator==(const LOGLogger& other) const { return m_name == other.m_name ? 1 : 0; }
  int operator!=(const LOGLogger& other) const { return *this == other ? 0 : 1; }
  friend int operator==(const LOGObject& a, const LOGLogger& b) { return a.operator==(b); }
  friend int operator!=(const LOGObject& a, const LOGLogger& b) { return a.operator!=(b); }
  /// Refuses: throws ZEBAssertError.
  LOGObject* clone() const override;

  /// Each logs `message` when its level is enabled. The message stays the caller's and may be null.
  /// These requests also work while the logger has no repository. Without memory for the event it
  /// is lost and the diagnostics say so, here and in all other requests to log.
  void debug(LOGObject* message) { request(LOGLevel::DEBUG_RANK, message); }
  void info(LOGObject* message) { request(LOGLevel::INFO_RANK, message); }
  void warn(LOGObject* message) { request(LOGLevel::WARN_RANK, message); }
  void error(LOGObject* message) { request(LOGLevel::ERROR_RANK, message); }
  void fatal(LOGObject* message) { request(LOGLevel::FATAL_RANK, message); }

  /// The same for a text.
  void debug(const I18NString& message) { request(LOGLevel::DEBUG_RANK, message); }
  void info(const I18NString& message) { request(LOGLevel::INFO_RANK, message); }
  void warn(const I18NString& message) { request(LOGLevel::WARN_RANK, message); }
  void error(const I18NString& message) { request(LOGLevel::ERROR_RANK, message); }
  void fatal(const I18NString& message) { request(LOGLevel::FATAL_RANK, message); }

  /// The same for what converts to a text, such as a literal or a std::string; it is converted only
  /// when the level is enabled.
  template <typename Text>
  using IfText = std::enable_if_t<std::is_convertible_v<const Text&, I18NString> &&
                                  !std::is_convertible_v<const Text&, LOGObject*>>;
  template <typename Text, typename = IfText<Text>>
  void debug(const Text& message) {
    requestText(LOGLevel::DEBUG_RANK, message);
  }
  template <typename Text, typename = IfText<Text>>
  void info(const Text& message) {
    requestText(LOGLevel::INFO_RANK, message);
  }
  template <typename Text, typename = IfText<Text>>
  void warn(const Text& message) {
    requestText(LOGLevel::WARN_RANK, message);
  }
  template <typename Text, typename = IfText<Text>>
  void error(const Text& message) {
    requestText(LOGLevel::ERROR_RANK, message);
  }
  template <typename Text, typename = IfText<Text>>
  void fatal(const Text& message) {
    requestText(LOGLevel::FATAL_RANK, message);
  }

  /// Logs UTF-8 text at the level of that rank, when it is enabled. REQUIRES: a rank of LOGLevel.
  void logUtf8(int rank, std::string_view text) {
    if (wouldLog(rank)) {
      logEnabled(rank, text);
    }
  }
  /// The same in an event whose throwable text is LOGThrowableText::of(thrown).
  void logThrown(int rank, std::string_view text, const std::exception& thrown);
  void logThrown(int rank, std::string_view text, const std::exception_ptr& thrown);

  /// Reports that there was no memory for an event, as the macros do for what they format.
  static void reportLostEvent() noexcept;

  /// Whether debug(), info(), ... with the level of that rank would log now.
  bool wouldLog(int rank) const {
    // Two loads, whatever the depth of the logger: the lowest step that logs is remembered until a
    // level, a threshold, a parent or a repository changes anywhere in the process.
    const std::uint64_t gate = m_gate.load(std::memory_order_relaxed);
    return isStep(rank) && gate >> GATE_BITS == m_gateEpoch.load(std::memory_order_acquire)
               ? static_cast<unsigned>(rank / STEP) >= (gate & ((1U << GATE_BITS) - 1))
               : wouldLogNow(rank);
  }
  /// Makes every logger look at the levels again. To be called after anything has changed that
  /// decides whether a request is enabled.
  static void forgetGates() { m_gateEpoch.fetch_add(1, std::memory_order_release); }

  /// Logs at any level; does nothing without a repository or a level.
  void log(LOGLevel* level, LOGObject* message);
  void log(LOGLevel* level, const I18NString& message);
  /// Logs the text that the resource bundle has for `key`, or the key itself. Throws ZEBAssertError
  /// when `level` is null.
  void l7dlog(LOGLevel* level, const I18NString& key);
  void l7dlog(LOGLevel* level, const I18NString& key, LOGObject*) { l7dlog(level, key); }
  /// Logs `msg` as an error when `assertion` is 0.
  void assertLog(int assertion, const I18NString& msg);
  /// Hands the event to the appenders of this logger and, while additivity holds, of its ancestors.
  void callAppenders(LOGLoggingEvent* event) { passOn(event, false); }

  /// 1 when log() at that level would log now, else 0; 0 without a repository.
  int isEnabledFor(LOGLevel* level) const;
  int isDebugEnabled() const;
  int isInfoEnabled() const;

  /// The level in force: the logger's own, or that of the nearest ancestor that has one; null when
  /// none has. A level once returned stays valid as long as the logger that it belongs to.
  LOGLevel* getChainedLevel() const;
  /// The logger's own level, null while it inherits.
  const LOGLevel* getLevel() const { return m_level.load(std::memory_order_acquire); }

  LOGLogger* getParent() const { return m_parent.load(std::memory_order_acquire); }
  void setParent(LOGLogger* parent) {
    m_parent.store(parent, std::memory_order_release);
    forgetGates();
  }
  LOGLoggerRepository* getRepository() const {
    return m_repository.load(std::memory_order_acquire);
  }
  void setRepository(LOGLoggerRepository* repository) {
    m_repository.store(repository, std::memory_order_release);
    forgetGates();
  }
  /// 1 when events also go to the ancestors' appenders, else 0.
  int getAdditivity() const { return m_additive.load(std::memory_order_relaxed); }
  void setAdditivity(int additive) { m_additive.store(additive, std::memory_order_relaxed); }
  const I18NString& getName() const { return m_name; }
  const I18NString& getResourceBundleString(const I18NString& key) const;

  // Appenders are not owned. Each operation takes the logger's lock but isAttached(). One that was
  // removed may be deleted when the removal returns, if that was not called from within a call that
  // logs, nor under a lock of the library.
  void addAppender(LOGAppenderSkeleton* newAppender) override;
  ZEBListIterator<LOGAppenderSkeleton*> getAllAppenders() override;
  LOGAppenderSkeleton* getAppender(const I18NString& name) override;
  int isAttached(LOGAppenderSkeleton* appender) override { return m_aai.isAttached(appender); }
  void removeAllAppenders() override { removeAllAppenders(nullptr); }
  /// Closes and removes all appenders; those that `table` has under their name become stale. What a
  /// close() throws is passed on at the end.
  void removeAllAppenders(LOGHashtable* table);
  void removeAppender(const I18NString& name) override;
  void removeAppender(LOGAppenderSkeleton* appender) override;
  /// The appenders as they are now, without taking the logger's lock.
  std::vector<LOGAppenderSkeleton*> snapshotOfAppenders() const { return m_aai.snapshot(); }
  /// One of them by number, null beyond the last; under the logger's lock.
  LOGAppenderSkeleton* appenderAt(std::size_t position) const { return m_aai.at(position); }
  const LOGAppenderAttachableImpl& getAAI() const { return m_aai; }
  /// Attaches these appenders in place of those there, by removeAllAppenders() and addAppender(),
  /// which here close nothing, in one step: no event meets a part of either set. The additivity
  /// changes with them, where one is given.
  void replaceAppenders(const std::vector<LOGAppenderSkeleton*>& appenders,
                        std::optional<int> additive = std::nullopt);
  /// Removes each appender for which `replacementFor` has another one, and adds that. No event
  /// finds neither of them.
  void exchangeAppenders(
      const std::function<LOGAppenderSkeleton*(const LOGAppenderSkeleton&)>& replacementFor);
  /// Closes the appenders, which stay attached, under the logger's lock; what a close() throws is
  /// passed on at the end.
  void closeNestedAppenders();
  /// Closes the asynchronous ones without that lock, so that it can wait for their threads; first
  /// flushes each, for up to so many milliseconds.
  void closeAsyncAppenders(int milliseconds);

  /// As the operations of LOGManager.
  static LOGLogger* getLogger(const I18NString& name);
  static LOGLogger* getLogger(const I18NString& name, LOGLoggerFactory* factory);
  static LOGLogger* getRootLogger();
  static LOGLogger* exists(const I18NString& name);
  static void shutdown();

  /// The class name that events are made with.
  static const I18NString m_FQCN;

 protected:
  LOGLogger();
  explicit LOGLogger(const I18NString& name);
  LOGLogger(const LOGLogger& other);
  LOGLogger& operator=(const LOGLogger& other);

  /// Logs without asking whether the level is enabled.
  void forcedLog(const I18NString& fqn, LOGLevel* level, LOGObject* message);

 private:
  /// The ranks of the level methods are steps.
  static constexpr int STEP = LOGLevel::DEBUG_RANK;
  static constexpr bool isStep(int rank) {
    return rank % STEP == 0 && rank >= LOGLevel::DEBUG_RANK && rank <= LOGLevel::FATAL_RANK;
  }
  /// The lowest step that is at least `rank`; one beyond the last if there is none.
  static constexpr unsigned stepFrom(int rank) {
    return rank <= LOGLevel::DEBUG_RANK  ? LOGLevel::DEBUG_RANK / STEP
           : rank > LOGLevel::FATAL_RANK ? LOGLevel::FATAL_RANK / STEP + 1
                                         : static_cast<unsigned>((rank + STEP - 1) / STEP);
  }
  bool wouldLogNow(int rank) const;
  bool passesRepositoryAndLevel(const LOGLevel* level) const;
  void request(int rank, LOGObject* message) {
    if (wouldLog(rank)) {
      logEnabled(rank, message);
    }
  }
  void request(int rank, const I18NString& message) {
    if (wouldLog(rank)) {
      logEnabled(rank, message);
    }
  }
  template <typename Text>
  void requestText(int rank, const Text& message) {
    if (!wouldLog(rank)) {
      return;
    }
    if constexpr (std::is_convertible_v<const Text&, const char*> && !std::is_class_v<Text>) {
      const char* const text = message;
      logEnabled(rank, text == nullptr ? std::string_view() : std::string_view(text));
    } else if constexpr (std::is_base_of_v<std::string, Text>) {
      logEnabled(rank, std::string_view(message));
    } else {
      try {
        logEnabled(rank, I18NString(message));
      } catch (const std::bad_alloc&) {
        reportLostEvent();
      }
    }
  }
  /// Hands the event on; where it may, renders a message first whose rendering is code of the
  /// program.
  void passOn(LOGLoggingEvent* event, bool mayRender);
  bool mayHaveAppenders() const;
  void logEnabled(int rank, LOGObject* message);
  void logEnabled(int rank, const I18NString& message);
  void logEnabled(int rank, std::string_view message);
  template <typename Message>
  void logText(int rank, const Message& message);
  template <typename Thrown>
  void logWithTextOf(int rank, std::string_view text, const Thrown& thrown);
  LOGLevel* keptCopyOf(const LOGLevel& level);
  void storeLevel(const LOGLevel* level);

  static std::atomic<std::uint64_t> m_gateEpoch;

  // What every event reads, of the logger and of each ancestor, stands together.
  // The epoch, and in the lowest GATE_BITS the lowest step that logs, as it was then. Epoch 0 never
  // is, and counting to the last takes decades.
  static constexpr int GATE_BITS = 8;
  mutable std::atomic<std::uint64_t> m_gate{0};

 protected:
  // A derived class that sets parent, level or repository itself calls forgetGates().
  ZEBSharedPointer<LOGLogger> m_parent;
  std::atomic<int> m_additive{1};
  // Read without a lock by every request, so a copy that was replaced is kept in m_levelCopies; an
  // equal level takes it into use again.
  ZEBSharedPointer<LOGLevel> m_level;
  ZEBSharedPointer<LOGLoggerRepository> m_repository;
  LOGAppenderAttachableImpl m_aai;  // guarded by the logger's lock
  I18NString m_name;

 private:
  std::vector<std::unique_ptr<LOGLevel>> m_levelCopies;  // guarded by the logger's lock
};

#endif
