// Datagrams of the network appenders, received by programs that are not ours: a Java program and
// rsyslogd, which must be installed.

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "config/LOG4ZEBConfigurator.h"
#include "core/LOGLogger.h"
#include "core/LOGManager.h"
#include "net/LOGLocalUDPAppender.h"
#include "support/ChildProcess.h"
#include "support/TestEvent.h"
#include "support/Threads.h"
#include "support/Workplace.h"

namespace {

void log(LOGAppenderSkeleton& appender, const std::string& logger, LOGObject message) {
  TestEvent event(logger, "INFO", &message);
  appender.activateOptions();
  appender.doAppend(&event);
}

void log(LOGAppenderSkeleton& appender, const std::string& logger, const std::string& message) {
  log(appender, logger, LOGObject(I18NString(message)));
}

/// Fails the test that needs the program when the build found none of the name.
void requireProgram(const std::string& path, const std::string& package) {
  ASSERT_TRUE(std::filesystem::exists(path))
      << path << ": install the package " << package << " and configure the build again";
}

/// A daemon that runs with the file rsyslog.conf of the working directory.
std::unique_ptr<ChildProcess> startDaemon() {
  const std::string here = std::filesystem::current_path().string();
  return std::make_unique<ChildProcess>(
      LOG4ZEB_RSYSLOGD,
      std::vector<std::string>{"-n", "-f", here + "/rsyslog.conf", "-i", here + "/rsyslog.pid"});
}

/// Logs until something is in the file.
template <typename Log>
bool comesUp(const std::string& file, const Log& logOnce) {
  return eventually([&] {
    logOnce();
    return !Workplace::read(file).empty();
  });
}

/// Waits until the file has the text.
bool comesTo(const std::string& file, const std::string& text) {
  return eventually([&] { return Workplace::read(file).find(text) != std::string::npos; });
}

}  // namespace

TEST(JavaProgram, ReadsTheRecordsOfTheLocalUDPAppender) {
  const Workplace workplace;
  ASSERT_NO_FATAL_FAILURE(requireProgram(LOG4ZEB_JAVAC, "default-jdk-headless"));
  ChildProcess compiler(LOG4ZEB_JAVAC, {"-d", ".", LOG4ZEB_JAVA_SOURCES "/LOGObject.java",
                                        LOG4ZEB_JAVA_SOURCES "/RecordReader.java"});
  ASSERT_EQ(compiler.wait().exitCode, 0) << compiler.errors();

  ChildProcess reader(LOG4ZEB_JAVA, {"-cp", ".", "RecordReader", "4"});
  const std::string port = reader.receive(6);
  ASSERT_EQ(port.size(), 6U) << reader.errors();
  LOGLocalUDPAppender appender;
  appender.setPort(std::stoi(port));
  log(appender, "a.b", "hi");
  log(appender, "caf\xC3\xA9", "");
  const char16_t units[] = {u'a', 0, 0xE9, 0x20AC, 0xD83D, 0xDE00, 0xDC00};
  log(appender, "a.b", LOGObject(I18NString(units, 7)));
  std::string huge = "x";
  for (int i = 0; i < 40000; ++i) {
    huge += "\xF0\x9F\x98\x80";
  }
  log(appender, "a.b", huge);

  EXPECT_EQ(reader.wait().exitCode, 0) << reader.errors();
  // Of 65507 bytes 48 are not text of a message for a.b; the pairs take six each.
  const std::string cut = std::to_string(1 + (65507 - 48 - 1) / 6 * 2);
  EXPECT_EQ(reader.receive(), port + "a.b 2 0068 0069\n" +
                                  "caf\xC3\xA9 0\n"
                                  "a.b 7 0061 0000 00e9 20ac d83d de00 dc00\n"
                                  "a.b " +
                                  cut + " 0078 d83d de00 d83d de00 d83d de00 d83d\n");
}

TEST(SyslogDaemon, FilesWhatTheExampleDocumentSendsAndShowsItToNobodyElse) {
  const Workplace workplace;
  ASSERT_NO_FATAL_FAILURE(requireProgram(LOG4ZEB_RSYSLOGD, "rsyslog"));
  const std::string here = std::filesystem::current_path().string() + "/";
  const std::string logs = "/var/log/";
  std::string example = Workplace::read(LOG4ZEB_SOURCES "/examples/network/shop.conf");
  ASSERT_NE(example.find(logs), std::string::npos);
  Workplace::write("rsyslog.conf", "global(workDirectory=\"" + here + "\")\n" +
                                       example.replace(example.find(logs), logs.size(), here) +
                                       "*.emerg action(type=\"omfile\" file=\"" + here +
                                       "everybody.out\")\n");
  const auto daemon = startDaemon();
  ASSERT_EQ(LOG4ZEBConfigurator::initialize(LOG4ZEB_SOURCES "/examples/documents/syslog.xml"), 1);
  LOGLogger* const logger = LOGManager::getLogger("shop.orders");
  ASSERT_TRUE(comesUp("shop.log", [&] { logger->warn("are you there"); })) << daemon->errors();
  logger->info("kept here");
  logger->error("refused: caf\xC3\xA9");
  EXPECT_TRUE(comesTo("shop.log", " shop: ERROR shop.orders - refused: caf\xC3\xA9\n"));
  daemon->signal(SIGTERM);
  EXPECT_EQ(daemon->wait().exitCode, 0) << daemon->errors();
  EXPECT_EQ(Workplace::read("shop.log").find("kept here"), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists("everybody.out")) << Workplace::read("everybody.out");
}
