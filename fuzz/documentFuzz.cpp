// A configuration document from bytes to configured loggers: it is parsed, applied, logged through,
// applied once more as a watchdog does, logged through again, and taken down. Reaches the parser of
// documents, the configurator, every appender, layout and filter, and rollovers.
//
// Expected beyond not failing: a document that is refused has changed nothing, a second run gives
// the root logger what the first gave it, and a shutdown leaves no appender behind.

#include <algorithm>
#include <cctype>
#include <string>
#include <vector>

#include "appenders/LOGAppenderSkeleton.h"
#include "config/LOG4ZEBConfigurator.h"
#include "core/LOGLogger.h"
#include "platform/IZEBConfiguration.h"
#include "platform/ZEBConfigurationFactory.h"
#include "support/DocumentMutator.h"
#include "support/Expect.h"
#include "support/FreshHierarchy.h"
#include "support/PatternWidths.h"
#include "support/ScratchDirectory.h"
#include "support/SealedSystem.h"

namespace {

constexpr const char* DOCUMENT = "document.xml";
constexpr const char* LOGS = "logs";

/// Keeps the files of appenders together in one directory, whatever the document calls them.
class FilesInOnePlace : public IZEBConfiguration {
 public:
  explicit FilesInOnePlace(const ScratchDirectory& scratch) : m_scratch(scratch) {}
  I18NString resolvePath(const I18NString& name) const override {
    constexpr std::size_t LONGEST = 32;
    std::string safe = name.toStdString().substr(0, LONGEST);
    std::replace_if(
        safe.begin(), safe.end(),
        [](unsigned char c) { return std::isalnum(c) == 0 && c != '.' && c != '_'; }, '-');
    // A rollover asks again for the name that it has.
    const std::string place = m_scratch.path(LOGS) + "/log.";
    const std::string whole = name.toStdString();
    const bool isResolved = whole.compare(0, place.size(), place) == 0 &&
                            whole.find('/', place.size()) == std::string::npos;
    return isResolved ? name : I18NString(place + safe);
  }

 private:
  const ScratchDirectory& m_scratch;
};

struct Place {
  Place() {
    scratch.makeDirectory(LOGS);
    ZEBConfigurationFactory::setInstance(&configuration);
  }
  Place(const Place&) = delete;
  Place& operator=(const Place&) = delete;
  ~Place() { ZEBConfigurationFactory::setInstance(nullptr); }

  ScratchDirectory scratch;
  FilesInOnePlace configuration{scratch};
};

void logThroughAll(const LOGHierarchy& hierarchy) {
  PatternWidths::limit();
  for (LOGLogger* const logger : hierarchy.getAllLoggers()) {
    logger->debug("first\r\nsecond");
    logger->error("a message <with> \"all\" & ]]> \xC3\xA4\xF0\x9F\x98\x80");
  }
}

void expectUntouched(const LOGHierarchy& hierarchy) {
  const std::vector<LOGLogger*> loggers = hierarchy.getAllLoggers();
  expect(loggers.size() == 1, "a refused document makes no logger");
  expect(loggers.front()->getLevel()->toInt() == LOGLevel::DEBUG_RANK &&
             hierarchy.getThresholdRank() == LOGLevel::ALL_RANK,
         "a refused document changes no level");
}

void expectNoAppender(const LOGHierarchy& hierarchy) {
  for (const LOGLogger* const logger : hierarchy.getAllLoggers()) {
    expect(logger->snapshotOfAppenders().empty(), "no logger keeps an appender");
  }
}

/// What a run has made of the root logger.
std::vector<std::string> setUpOf(LOGHierarchy& hierarchy) {
  const LOGLogger* const root = hierarchy.getRootLogger();
  std::vector<std::string> setUp{root->getLevel()->toString(),
                                 hierarchy.getThreshold()->toString()};
  for (const LOGAppenderSkeleton* const appender : root->snapshotOfAppenders()) {
    setUp.push_back(appender->instanceOf().toStdString() + appender->getName().toStdString());
  }
  return setUp;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Place place;
  place.scratch.write(DOCUMENT, {reinterpret_cast<const char*>(data), size});
  FreshHierarchy hierarchy;
  const std::string document = place.scratch.path(DOCUMENT);
  const int applied = LOG4ZEBConfigurator::initialize(document);
  if (applied == 0) {
    expectUntouched(hierarchy.get());
    expectNoAppender(hierarchy.get());
  } else {
    logThroughAll(hierarchy.get());
    const std::vector<std::string> setUp = setUpOf(hierarchy.get());
    expect(LOG4ZEBConfigurator::initialize(document) == 1, "a document is applied again");
    expect(setUpOf(hierarchy.get()) == setUp, "a document means the same when it is applied again");
    logThroughAll(hierarchy.get());
  }
  LOG4ZEBConfigurator::shutdown();
  expectNoAppender(hierarchy.get());
  SealedSystem::takeDatagrams();
  place.scratch.empty(LOGS);
  return 0;
}

// The fuzzer's own changes of bytes, which it declares nowhere.
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t maxSize, unsigned int seed) {
  const auto changeBytes = [maxSize](const std::string& bytes) {
    std::vector<std::uint8_t> room(maxSize);
    const std::size_t kept = std::min(bytes.size(), maxSize);
    std::copy_n(bytes.begin(), kept, room.begin());
    const std::size_t changed = LLVMFuzzerMutate(room.data(), kept, maxSize);
    return std::string(room.begin(), room.begin() + static_cast<std::ptrdiff_t>(changed));
  };
  const std::string document(reinterpret_cast<const char*>(data), size);
  const std::string mutated = DocumentMutator(seed, changeBytes).mutate(document);
  const std::size_t kept = std::min(mutated.size(), maxSize);
  std::copy_n(mutated.begin(), kept, data);
  return kept;
}
