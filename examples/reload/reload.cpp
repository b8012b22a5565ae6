// A program whose document is edited while it runs. Here it edits a copy of the document itself, as
// somebody with an editor would: it sets the level of the logger shop.db to DEBUG.
//
//   reload DOCUMENT

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <thread>

#include "config/LOGXMLWatchdog.h"
#include "log4zeb.h"

namespace {

namespace fs = std::filesystem;

const fs::path WATCHED = "watched.xml";

std::string contentOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

/// Writes a new document and moves it into place, so that nobody reads half of it.
void replaceDocument(const std::string& content) {
  const fs::path temporary = "watched.xml.new";
  std::ofstream(temporary, std::ios::binary) << content;
  fs::rename(temporary, WATCHED);
}

void setLevelOfDatabase(const std::string& from, const std::string& to) {
  std::string content = contentOf(WATCHED);
  const std::size_t logger = content.find("shop.db");
  content.replace(content.find(from, logger), from.size(), to);
  // Two edits within one step of the file system's clock would count as one.
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  replaceDocument(content);
}

/// Waits up to ten seconds until DEBUG is on or off, and returns whether it is.
bool waitUntilDebugIs(int enabled, LOGLogger* logger) {
  for (int i = 0; i < 1000 && logger->isDebugEnabled() != enabled; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return logger->isDebugEnabled() == enabled;
}

int run() {
  LOGXMLWatchdog watchdog(WATCHED.string());  // applies the document, on this thread
  if (watchdog.wasApplied() == 0) {
    std::cerr << "reload: cannot apply the configuration document\n";
    return 1;
  }
  LOGXMLWatchdog::setDelay(50);  // milliseconds between two looks; 6000 otherwise
  watchdog.start();

  LOGLogger* const logger = LOGManager::getLogger("shop.db");
  logger->info("working");
  logger->debug("a detail that nobody has asked for");

  setLevelOfDatabase("INFO", "DEBUG");
  const bool isOn = waitUntilDebugIs(1, logger);
  logger->debug("details from now on");

  setLevelOfDatabase("DEBUG", "INFO");
  const bool isOff = waitUntilDebugIs(0, logger);
  logger->debug("not any more");
  logger->info("still working");

  watchdog.stop();  // before the shutdown, which it would undo
  LOG4ZEBConfigurator::shutdown();
  return isOn && isOff ? 0 : 1;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount != 2) {
    std::cerr << "usage: reload DOCUMENT\n";
    return 1;
  }
  fs::copy_file(arguments[1], WATCHED, fs::copy_options::overwrite_existing);
  const int result = run();
  fs::remove(WATCHED);
  return result;
}
