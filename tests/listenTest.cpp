// The command log4zeb listen, run as a process.

#include <gtest/gtest.h>

#include <csignal>
#include <stdexcept>
#include <string>
#include <vector>

#include "net/LOGLocalUDPAppender.h"
#include "support/Command.h"
#include "support/DatagramReceiver.h"
#include "support/TestEvent.h"
#include "support/Threads.h"
#include "support/Workplace.h"

namespace {

/// The command with a free port for records and one for syslog datagrams, ready to receive.
class Listener : public ChildProcess {
 public:
  explicit Listener(std::vector<std::string> more, const std::string& program = LOG4ZEB_COMMAND,
                    const std::vector<std::string>& before = {})
      : ChildProcess(program, arguments(std::move(more), before)) {
    recordPort = portAfter("event records on 127.0.0.1:");
    syslogPort = portAfter("syslog datagrams on 127.0.0.1:");
  }

  int recordPort = 0;
  int syslogPort = 0;

 private:
  static std::vector<std::string> arguments(std::vector<std::string> more,
                                            const std::vector<std::string>& before) {
    more.insert(more.begin(), {"listen", "--records", "0", "--syslog", "0"});
    more.insert(more.begin(), before.begin(), before.end());
    return more;
  }

  int portAfter(const std::string& words) const {
    std::size_t place = 0;
    if (!eventually([&] {
          place = errors().find(words);
          return place != std::string::npos && errors().find('\n', place) != std::string::npos;
        })) {
      throw std::runtime_error("the command does not listen: " + errors());
    }
    return std::stoi(errors().substr(place + words.size()));
  }
};

void sendRecord(int port, const std::string& text) {
  LOGLocalUDPAppender appender;
  appender.setPort(port);
  appender.activateOptions();
  TestEvent event("shop.till", "INFO", text);
  appender.doAppend(&event);
}

}  // namespace

TEST(ListenCommand, PrintsALineForEachDatagramAtOnceUntilItIsInterrupted) {
  const Workplace workplace;
  Listener listener({});
  std::string expected;
  const auto lineComes = [&](const std::string& line) {
    expected += line + "\n";
    return listener.receive(expected.size());
  };
  sendRecord(listener.recordPort, "two\nlines\r\n");
  EXPECT_EQ(lineComes("record shop.till: two\\nlines"), expected);
  sendDatagram(listener.syslogPort, "<160>x");
  EXPECT_EQ(lineComes("syslog local4.emerg: x"), expected);
  sendDatagram(listener.syslogPort, "");
  EXPECT_EQ(lineComes("syslog without priority: "), expected);
#ifdef _WIN32
  listener.kill();
  listener.wait();
#else
  listener.signal(SIGINT);
  EXPECT_EQ(listener.wait().exitCode, 0);
#endif
  EXPECT_EQ(listener.receive(), expected);
}

TEST(ListenCommand, EndsAfterTheCountAndPrintsJson) {
  const Workplace workplace;
  Listener listener({"--json", "--count", "2"});
  sendRecord(listener.recordPort, "say \"hi\"");
  listener.receive(1);
  sendDatagram(listener.recordPort, "\xAC\xED");
  EXPECT_EQ(listener.wait().exitCode, 0);
  const std::string lines = listener.receive();
  EXPECT_NE(lines.find("\"logger\":\"shop.till\",\"class\":\"LOGObject\","
                       "\"message\":\"say \\\"hi\\\"\"}\n{\"kind\":\"unreadable\""),
            std::string::npos)
      << lines;
  EXPECT_NE(lines.find("\"content\":\"aced\"}\n"), std::string::npos);
}

#ifndef _WIN32
TEST(ListenCommand, EndsWhenNobodyReadsWhatItPrints) {
  const Workplace workplace;
  Listener listener(
      {}, "/bin/sh",
      {"-c", "mkfifo pipe; exec 3<>pipe 4>pipe 3>&-; \"$0\" \"$@\" >&4", LOG4ZEB_COMMAND});
  sendDatagram(listener.syslogPort, "<160>x");
  EXPECT_EQ(listener.wait().exitCode, 5);
  const std::string complaint = "\nlog4zeb: cannot write to standard output\n";
  EXPECT_NE(listener.errors().find(complaint), std::string::npos) << listener.errors();
}
#endif

TEST(ListenCommand, SaysWhyItCannotListen) {
  const Workplace workplace;
  const DatagramReceiver other;
  const auto complaint = [](const std::vector<std::string>& arguments, int exitCode) {
    const Outcome outcome = runProgram(LOG4ZEB_COMMAND, arguments);
    EXPECT_EQ(outcome.exitCode, exitCode);
    return outcome.errors;
  };
  EXPECT_NE(complaint({"listen", "--records", std::to_string(other.port())}, 3)
                .find("cannot listen for event records on 127.0.0.1:" +
                      std::to_string(other.port()) + " ("),
            std::string::npos);
  EXPECT_NE(complaint({"listen", "--address", "no-such-host.invalid"}, 3).find("no such address"),
            std::string::npos);
  complaint({"listen", "--count", "0"}, 2);
  complaint({"listen", "--syslog", "65536"}, 2);
}
