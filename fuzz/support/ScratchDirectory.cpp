#include "support/ScratchDirectory.h"

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

namespace fs = std::filesystem;

ScratchDirectory::ScratchDirectory()
    : m_path(fs::temp_directory_path() /
             ("log4zeb-fuzz-" + std::to_string(std::random_device()()))) {
  fs::create_directories(m_path);
}

ScratchDirectory::~ScratchDirectory() {
  std::error_code ignored;
  fs::remove_all(m_path, ignored);
}

void ScratchDirectory::write(const std::string& name, std::string_view bytes) const {
  std::ofstream(path(name), std::ios::binary) << bytes;
}

std::vector<std::string> ScratchDirectory::list(const std::string& name) const {
  std::vector<std::string> paths;
  for (const auto& entry : fs::directory_iterator(path(name))) {
    paths.push_back(entry.path());
  }
  return paths;
}

void ScratchDirectory::makeDirectory(const std::string& name) const {
  fs::create_directories(path(name));
}

void ScratchDirectory::enter(const std::string& name) const { fs::current_path(path(name)); }

void ScratchDirectory::empty(const std::string& name) const {
  for (const std::string& found : list(name)) {
    fs::remove_all(found);
  }
}

std::string ScratchDirectory::read(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}
