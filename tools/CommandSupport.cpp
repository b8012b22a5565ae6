#include "tools/CommandSupport.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <system_error>

void CommandSupport::say(const std::string& text) { std::cerr << "log4zeb: " + text + "\n"; }

std::string CommandSupport::reason(int error) {
  return error == 0 ? "" : " (" + std::generic_category().message(error) + ")";
}

bool CommandSupport::openToRead(std::ifstream& file, const std::string& name, const char* what) {
  errno = 0;
  file.open(std::filesystem::u8path(name), std::ios::in | std::ios::binary);
  if (file.is_open()) {
    file.peek();
  }
  if (!file.is_open() || file.bad()) {
    say("cannot read the " + std::string(what) + " '" + name + "'" + reason(errno));
    return false;
  }
  file.clear();
  return true;
}
