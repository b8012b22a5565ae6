#include "soak/SoakDisturber.h"

#include <cstring>
#include <filesystem>

#include "appenders/LOGAsyncAppender.h"
#include "core/LOGLogger.h"
#include "core/LOGLoggerRepository.h"
#include "core/LOGManager.h"
#include "platform/ZEBAssertError.h"
#include "soak/SoakDocument.h"
#include "soak/SoakLine.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* LEVELLED[] = {"soak.even", "soak.odd", "soak.even.pool.3", "soak.odd.pool.5"};
constexpr const char* ASIDE = "aside";  // not in the document
constexpr std::size_t MOST_GUESTS = 40;

}  // namespace

SoakDisturber::SoakDisturber(unsigned seed, int source, SoakReceiver& syslog, SoakReceiver& records)
    : m_random(seed), m_source(source), m_syslog(syslog), m_records(records) {}

void SoakDisturber::disturb() {
  const unsigned choice = m_random.below(100);
  if (choice < 40) {
    changeLevel();
  } else if (choice < 55) {
    changeThreshold();
  } else if (choice < 65) {
    resizeQueue();
  } else if (choice < 80) {
    logThroughAnAddedAppender();
  } else if (choice < 88) {
    addOrRemoveGuest();
  } else if (choice < 92) {
    toggle(m_syslog);
  } else if (choice < 96) {
    toggle(m_records);
  } else {
    letDirectoryVanish(m_random.oneIn(2) ? LOST_DIRECTORY : MOVED_DIRECTORY);
  }
  m_random.nap(10);
}

void SoakDisturber::prime() {
  for (const char* const level : SoakDocument::LEVELS) {
    for (const char* const name : LEVELLED) {
      LOGManager::getLogger(name)->setLevel(LOGLevel::toLevel(level));
    }
    LOGManager::getRootLogger()->setLevel(LOGLevel::toLevel(level));
  }
}

void SoakDisturber::changeLevel() {
  // The document's own loggers never inherit here: a reading that finds that would report it.
  const char* const name = LEVELLED[m_random.below(std::size(LEVELLED))];
  const unsigned level = m_random.below(SoakDocument::LEVEL_COUNT);
  const bool inherits = std::strstr(name, "pool") != nullptr && m_random.oneIn(4);
  LOGManager::getLogger(name)->setLevel(inherits ? nullptr
                                                 : LOGLevel::toLevel(SoakDocument::LEVELS[level]));
}

void SoakDisturber::changeThreshold() {
  LOGManager::getLoggerRepository()->setThreshold(
      SoakDocument::LEVELS[m_random.below(SoakDocument::LEVEL_COUNT)]);
}

void SoakDisturber::resizeQueue() {
  auto* const async =
      dynamic_cast<LOGAsyncAppender*>(LOGManager::getLogger("soak.odd")->getAppender("ASYNC"));
  try {
    if (async != nullptr) {
      async->setBufferSize(static_cast<int>(1 + m_random.below(200)));
    }
  } catch (const ZEBAssertError&) {
    // A reading of the document has closed it meanwhile.
  }
}

void SoakDisturber::logThroughAnAddedAppender() {
  LOGLogger* const logger = LOGManager::getLogger(ASIDE);
  logger->setAdditivity(0);
  LOGFileAppender appender(&m_layout, "added.log");
  appender.setName("ADDED");
  logger->addAppender(&appender);
  for (unsigned left = m_random.below(20); left > 0; --left) {
    logger->error(SoakLine{m_source, m_sent++}.text());
  }
  logger->removeAppender(&appender);
}

void SoakDisturber::addOrRemoveGuest() {
  // A reading of the document takes guests away and closes them, so they are kept to the end.
  LOGLogger* const logger = LOGManager::getLogger("soak.odd");
  if (m_guestIsAttached) {
    logger->removeAppender(m_guests.back().get());
    m_guests.back()->close();
    m_guestIsAttached = false;
  } else if (m_guests.size() < MOST_GUESTS) {
    m_guests.push_back(std::make_unique<LOGFileAppender>(&m_layout, "guest.log"));
    m_guests.back()->setName("GUEST");
    m_guests.back()->setThreshold(LOGLevel::toLevel("ERROR"));
    logger->addAppender(m_guests.back().get());
    m_guestIsAttached = true;
  }
}

void SoakDisturber::letDirectoryVanish(const std::string& directory) {
  const fs::path away = "gone." + std::to_string(m_vanishings++);
  fs::rename(directory, away);
  m_random.nap(60);
  if (directory == MOVED_DIRECTORY && m_random.oneIn(2)) {
    fs::rename(away, directory);
  } else {
    fs::create_directory(directory);
  }
}
