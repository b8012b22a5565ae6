// Datagrams of the network appenders, received by programs that are not ours: a Java program and
// rsyslogd, which must be installed.

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "config/LOG4ZEBConfigurator.h"
#include "core/LOGLogger.h"
#include "core/LOGManager.h"
#include "layouts/LOGPatternLayout.h"
#include "net/LOGLocalUDPAppender.h"
#include "net/LOGSyslogAppender.h"
#include "support/ChildProcess.h"
#include "support/TestEvent.h"
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

/// Logs through syslog with that facility to the daemon on this machine.
void logToDaemon(LOGLayout& layout, const std::string& facility, const std::string& message) {
  LOGSyslogAppender appender(&layout, "127.0.0.1", LOGSyslogAppender::getFacility(facility));
  log(appender, "shop", message);
}

std::string daemonConfiguration(const std::vector<std::string>& facilities) {
  const std::string here = std::filesystem::current_path().string();
  std::string text = "global(workDirectory=\"" + here +
                     "\")\nmodule(load=\"imudp\")\n"
                     "input(type=\"imudp\" address=\"127.0.0.1\" port=\"514\")\n"
                     "template(name=\"line\" type=\"string\" "
                     "string=\"%syslogfacility-text%|%rawmsg%\\n\")\n";
  for (const std::string& facility : facilities) {
    text += facility + ".* action(type=\"omfile\" template=\"line\" file=\"" + here + "/" +
            facility + ".out\")\n";
  }
  return text;
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
  for (int i = 0; i < 200 && Workplace::read(file).empty(); ++i) {
    logOnce();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  return !Workplace::read(file).empty();
}

/// Waits until the file has the text.
bool comesTo(const std::string& file, const std::string& text) {
  for (int i = 0; i < 1000; ++i) {
    if (Workplace::read(file).find(text) != std::string::npos) {
      return true;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return false;
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

TEST(SyslogDaemon, FilesTheMessagesUnderTheirFacilities) {
  const Workplace workplace;
  ASSERT_NO_FATAL_FAILURE(requireProgram(LOG4ZEB_RSYSLOGD, "rsyslog"));
  const std::vector<std::string> facilities{"user", "mail", "daemon", "authpriv", "local3"};
  Workplace::write("rsyslog.conf", daemonConfiguration(facilities));
  const auto daemon = startDaemon();
  LOGPatternLayout layout("%c: %m");
  ASSERT_TRUE(comesUp("user.out", [&] { logToDaemon(layout, "user", "are you there"); }))
      << "rsyslogd does not receive on port 514, which needs root: " << daemon->errors();
  for (const std::string& facility : facilities) {
    logToDaemon(layout, facility, "for " + facility + " \xC3\xA9");
  }
  for (const std::string& facility : facilities) {
    const std::string code = std::to_string(LOGSyslogAppender::getFacility(facility));
    EXPECT_TRUE(comesTo(facility + ".out",
                        facility + "|<" + code + ">shop: for " + facility + " \xC3\xA9\n"))
        << Workplace::read(facility + ".out");
  }
  daemon->signal(SIGTERM);
  EXPECT_EQ(daemon->wait().exitCode, 0) << daemon->errors();
  for (const std::string& facility : facilities) {
    const std::string lines = Workplace::read(facility + ".out");
    for (const std::string& other : facilities) {
      EXPECT_EQ(lines.find("for " + other) != std::string::npos, other == facility) << lines;
    }
  }
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
