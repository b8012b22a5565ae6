#include "bench/ScratchDirectory.h"

#include <cstdlib>
#include <fstream>
#include <functional>
#include <random>
#include <string>
#include <string_view>

#include "bench/Workload.h"

namespace fs = std::filesystem;

namespace {

bool isEventLine(std::string_view line) {
  constexpr std::string_view MESSAGE = workload::MESSAGE;
  if (!line.empty() && line.back() == '\r') {
    line.remove_suffix(1);
  }
  return line.size() > MESSAGE.size() && line.substr(line.size() - MESSAGE.size()) == MESSAGE;
}

/// Gives `visit` the lines of events, without the line feed, until it returns false.
void visitEventLines(const fs::path& directory,
                     const std::function<bool(const std::string&)>& visit) {
  for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
    std::ifstream file(entry.path(), std::ios::binary);
    for (std::string line; std::getline(file, line);) {
      if (isEventLine(line) && !visit(line)) {
        return;
      }
    }
  }
}

}  // namespace

ScratchDirectory::ScratchDirectory() {
  const char* const parent = std::getenv("LOG4ZEB_BENCH_DIRECTORY");
  std::random_device random;
  m_path = (parent == nullptr ? fs::current_path() : fs::absolute(parent)) /
           ("scratch-" + std::to_string(random()));
  fs::create_directories(m_path);
}

ScratchDirectory::~ScratchDirectory() {
  std::error_code ignored;
  fs::remove_all(m_path, ignored);
}

long ScratchDirectory::lines() const {
  long count = 0;
  visitEventLines(m_path, [&count](const std::string&) {
    ++count;
    return true;
  });
  return count;
}

long ScratchDirectory::bytesPerLine() const {
  long bytes = 0;
  visitEventLines(m_path, [&bytes](const std::string& line) {
    bytes = static_cast<long>(line.size()) + 1;
    return false;
  });
  return bytes;
}
