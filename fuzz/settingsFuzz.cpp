// The settings file of the diagnostics, read at the first message. A name with a slash is left out,
// because it would leave the harness's directory.
//
// Expected beyond not failing: the lines of two sessions stand in one file, whole and in their
// order, or no file is there at all.

#include <algorithm>
#include <string>
#include <vector>

#include "core/LOGLogLog.h"
#include "support/Expect.h"
#include "support/ScratchDirectory.h"

namespace {

constexpr const char* WORK = "work";
constexpr const char* SESSION = "log4zeb:WARN one\r\nlog4zeb:ERROR two\r\n";

struct Place : ScratchDirectory {
  Place() {
    makeDirectory("configuration");
    makeDirectory(WORK);
    enter(WORK);
  }
};

void runSession() {
  LOGLogLog::warn("one");
  LOGLogLog::error("two");
  LOGLogLog::shutdown();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Place place;
  const std::string settings(reinterpret_cast<const char*>(data), size);
  if (settings.find('/') != std::string::npos) {
    return -1;
  }
  place.write("configuration/logdebug.ini", settings);
  runSession();
  const std::vector<std::string> after = place.list(WORK);
  runSession();
  expect(place.list(WORK) == after && after.size() <= 1, "the diagnostics have one file");
  if (!after.empty()) {
    expect(ScratchDirectory::read(after.front()) == std::string(SESSION) + SESSION,
           "each message is a line of the file");
  }
  place.empty(WORK);
  return 0;
}
