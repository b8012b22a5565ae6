#include "core/LOGLogLog.h"

#include <exception>
#include <fstream>
#include <iomanip>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "platform/ZEBFmDir.h"
#include "platform/ZEBFmFile.h"
#include "platform/ZEBThreadGuard.h"
#include "platform/ZEBTranslate.h"

namespace {

constexpr const char* SETTINGS_FILE = "../configuration/logdebug.ini";
constexpr const char* DEFAULT_DEBUG_FILE = "log4zeb.log";
// A name that is longer cannot be opened, and neither can its beginning.
constexpr int LONGEST_FILE_NAME = 4096;
constexpr const char* PREFIX = "log4zeb: ";
constexpr const char* ERR_PREFIX = "log4zeb:ERROR ";
constexpr const char* WARN_PREFIX = "log4zeb:WARN ";

/// The last lock of all: nothing else is taken while it is held.
ZEBThreadCriticalSection g_lock;

[[noreturn]] void passOn(ZEBThrowable& t, const char* operation) {
  t.addBackTrace("ZEB_RETHROW", operation);
  if (std::current_exception() != nullptr) {
    try {
      throw;
    } catch (const ZEBThrowable& handled) {
      if (&handled == &t) {
        throw;  // as it is, whatever class of a program it has
      }
    } catch (...) {
      // It is another one.
    }
  }
  t.raise();
  throw t;  // never reached, but a compiler does not believe that of a virtual call
}

}  // namespace

const I18NString LOGLogLog::m_PREFIX = PREFIX;
const I18NString LOGLogLog::m_ERR_PREFIX = ERR_PREFIX;
const I18NString LOGLogLog::m_WARN_PREFIX = WARN_PREFIX;
const I18NString LOGLogLog::m_DEBUG_KEY = "log4zeb.debug";
const I18NString LOGLogLog::m_CONFIG_DEBUG_KEY = "log4zeb.configDebug";

std::atomic<bool> LOGLogLog::m_isOff{false};
std::atomic<int> LOGLogLog::m_initialized{0};
std::atomic<int> LOGLogLog::m_fileLogEnabled{0};
std::atomic<int> LOGLogLog::m_debugEnabled{0};
std::atomic<int> LOGLogLog::m_quietMode{1};
ZEBFmFile* LOGLogLog::m_debugFile = nullptr;

LOGLogLog::~LOGLogLog() = default;

void LOGLogLog::debug(const I18NString& msg) { writeMsg(PREFIX, msg); }

void LOGLogLog::warn(const I18NString& msg) { writeMsg(WARN_PREFIX, msg); }

void LOGLogLog::error(const I18NString& msg) { writeMsg(ERR_PREFIX, msg); }

void LOGLogLog::error(const char* msg) { writeMsg(ERR_PREFIX, msg); }

void LOGLogLog::debug(const I18NString& msg, ZEBThrowable& t) {
  debug(msg);
  passOn(t, "LOGLogLog::debug");
}

void LOGLogLog::warn(const I18NString& msg, ZEBThrowable& t) {
  warn(msg);
  passOn(t, "LOGLogLog::warn");
}

void LOGLogLog::error(const I18NString& msg, ZEBThrowable& t) {
  error(msg);
  passOn(t, "LOGLogLog::error");
}

void LOGLogLog::writeMsg(const char* prefix, const I18NString& msg) {
  if (!mayWrite()) {
    return;
  }
  const ZEBThreadGuard guard(g_lock);
  initLocked();
  if (m_fileLogEnabled.load() == 0 || msg.isEmpty()) {
    return;
  }
  // Neither the debug flag nor quiet mode filters anything: where the file is written, all of it
  // is.
  std::string line = prefix + msg.toStdString() + "\r\n";
  m_debugFile->seek(0, ZEBFmFile::ORIGIN_END);
  m_debugFile->write(line.data(), line.size());
  m_debugFile->flush();
}

void LOGLogLog::init() {
  const ZEBThreadGuard guard(g_lock);
  initLocked();
}

void LOGLogLog::initLocked() {
  if (m_initialized != 0) {
    return;
  }
  std::ifstream settings;
  // Opening a pipe could wait for ever, and a device may have no end.
  if (ZEBFmDir::exists(SETTINGS_FILE, ZEBFmDir::REGULAR_FILE) != 0) {
    settings.open(SETTINGS_FILE);
  }
  if (!settings.is_open()) {
    m_quietMode = 1;
    m_debugEnabled = 0;
    m_fileLogEnabled = 0;
    m_initialized = 1;
    m_isOff = true;
    return;
  }
  std::string debugWord;
  std::string fileName;
  fileName.reserve(LONGEST_FILE_NAME);  // a stream would keep a lack of memory to itself
  settings >> std::setw(LONGEST_FILE_NAME) >> debugWord;
  settings >> std::setw(LONGEST_FILE_NAME) >> fileName;
  m_debugEnabled = debugWord == "1" ? 1 : 0;
  // The settings know no word for quiet mode: reading them always ends it.
  m_quietMode = 0;
  openDebugFile(fileName.empty() ? DEFAULT_DEBUG_FILE : fileName);
  m_initialized = m_fileLogEnabled.load();
}

void LOGLogLog::openDebugFile(const I18NString& name) {
  auto file = zebTranslate("LOGLogLog", __LINE__, [] { return std::make_unique<ZEBFmFile>(); });
  const int mode =
      ZEBFmDir::exists(name, ZEBFmDir::READ_WRITE_FILE) != 0 ? ZEBFmFile::APPEND : ZEBFmFile::WRITE;
  const bool mayWait = false;  // the log calls would, each for a pipe that nobody reads
  if (file->open(name, mode, mayWait) == 0) {
    // Not initialised, so that the next message tries again.
    m_fileLogEnabled = 0;
    return;
  }
  m_debugFile = file.release();
  m_fileLogEnabled = 1;
}

void LOGLogLog::shutdown() {
  const ZEBThreadGuard guard(g_lock);
  if (m_fileLogEnabled.load() == 0) {
    return;
  }
  delete std::exchange(m_debugFile, nullptr);
  m_debugEnabled = 0;
  m_fileLogEnabled = 0;
  m_initialized = 0;
  m_quietMode = 1;
}
