#include "bench/BareWriteLog.h"

#include <fstream>

#include "bench/Log4zebLog.h"
#include "bench/ScratchDirectory.h"

namespace {

std::string lineOfTheLibrary() {
  const ScratchDirectory directory;
  Log4zebLog log(directory.path(), {});
  log.log();
  log.finish();
  std::ifstream file(directory.path() / "log4zeb.log", std::ios::binary);
  std::string line;
  std::getline(file, line);
  return line + '\n';
}

}  // namespace

BareWriteLog::BareWriteLog(const std::filesystem::path& directory) : m_line(lineOfTheLibrary()) {
  open(directory / "bare.log");
}
