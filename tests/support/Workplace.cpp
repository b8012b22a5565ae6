#include "support/Workplace.h"

#include <algorithm>
#include <fstream>
#include <random>
#include <sstream>

#include "config/LOG4ZEBConfigurator.h"
#include "core/LOGLogLog.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* DIAGNOSTIC_FILE = "log4zeb.log";

}  // namespace

Workplace::Workplace() : m_before(fs::current_path()) {
  std::random_device random;
  m_directory = fs::temp_directory_path() / ("log4zeb-test-" + std::to_string(random()));
  fs::create_directories(m_directory / "configuration");
  fs::create_directories(m_directory / "work");
  fs::current_path(m_directory / "work");
  write("../configuration/logdebug.ini", std::string("1 ") + DIAGNOSTIC_FILE);
  LOGLogLog::shutdown();
}

Workplace::~Workplace() {
  LOG4ZEBConfigurator::shutdown();
  fs::current_path(m_before);
  fs::remove_all(m_directory);
}

std::vector<std::string> Workplace::diagnostics() {
  return fs::exists(DIAGNOSTIC_FILE) ? lines(DIAGNOSTIC_FILE) : std::vector<std::string>();
}

std::ptrdiff_t Workplace::diagnosticsEqual(const std::string& line) {
  const std::vector<std::string> all = diagnostics();
  return std::count(all.begin(), all.end(), line);
}

std::ptrdiff_t Workplace::noted(const std::string& part) {
  const std::vector<std::string> all = diagnostics();
  return std::count_if(all.begin(), all.end(), [&](const std::string& line) {
    return line.find(part) != std::string::npos;
  });
}

void Workplace::clearDiagnostics() { fs::resize_file(DIAGNOSTIC_FILE, 0); }

std::string Workplace::read(const std::string& fileName) {
  std::ifstream file(fileName, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

std::vector<std::string> Workplace::lines(const std::string& fileName) {
  const std::string text = read(fileName);
  std::vector<std::string> found;
  std::size_t begin = 0;
  for (std::size_t end = 0; (end = text.find("\r\n", begin)) != std::string::npos;
       begin = end + 2) {
    found.push_back(text.substr(begin, end - begin));
  }
  if (begin != text.size()) {
    found.push_back("no line end: " + text.substr(begin));
  }
  return found;
}

void Workplace::write(const std::string& fileName, const std::string& text) {
  std::ofstream(fileName, std::ios::binary) << text;
}

int Workplace::configure(const std::string& children, const std::string& rootAttributes) {
  write(DOCUMENT, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<log4j:configuration " +
                      rootAttributes + ">\n" + children + "\n</log4j:configuration>\n");
  return LOG4ZEBConfigurator::initialize(DOCUMENT);
}
