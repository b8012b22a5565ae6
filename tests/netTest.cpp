// The appenders that send datagrams, over real sockets of this machine, and the decoders of what
// they send. Port 514 needs the right to use it; each test takes it at an address of its own.

#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <string>
#include <vector>

#include "core/LOGLogger.h"
#include "core/LOGManager.h"
#include "layouts/LOGPatternLayout.h"
#include "net/LOGLocalUDPAppender.h"
#include "net/LOGSyslogAppender.h"
#include "net/LOGTCPSocketAppender.h"
#include "rendering/LOGDefaultRenderer.h"
#include "rendering/LOGRecordStream.h"
#include "rendering/LOGRendererMap.h"
#include "support/DatagramReceiver.h"
#include "support/Documents.h"
#include "support/OpenSockets.h"
#include "support/TestEvent.h"
#include "support/Threads.h"
#include "support/Workplace.h"
#include "tools/DatagramLine.h"
#include "tools/RecordDecoder.h"

namespace {

constexpr int SYSLOG_PORT = 514;
constexpr const char* EMOJI = "\xF0\x9F\x98\x80";

/// The record of logger a.b and message hi.
const std::string& knownRecord() {
  static const std::string record(
      "\xAC\xED\x00\x05"
      "\x7A\x00\x00\x00\x05\x00\x03"
      "a.b"
      "\x73\x72\x00\x09LOGObject\x00\x00\x00\x00\x00\x00\x00\x01\x0C\x00\x00\x78"
      "\x70\x7A\x00\x00\x00\x04\x00\x02hi\x78",
      50);
  return record;
}

void log(LOGAppenderSkeleton& appender, LOGLoggingEvent& event) {
  appender.activateOptions();
  appender.doAppend(&event);
}

void log(LOGAppenderSkeleton& appender, const std::string& text) {
  TestEvent event("a.b", "INFO", text);
  log(appender, event);
}

long openSockets() { return OpenSockets::count().open; }

std::string messageOf(const std::optional<std::string>& datagram) {
  const auto record = RecordDecoder::decode(datagram.value_or(""));
  return record && record->message ? *record->message : "no record";
}

class SyslogAppenderTest : public testing::Test {
 protected:
  SyslogAppenderTest() { appender.setLayout(&layout); }

  Workplace workplace;
  LOGPatternLayout layout{"%m"};
  LOGSyslogAppender appender;
};

class LocalUDPAppenderTest : public testing::Test {
 protected:
  LocalUDPAppenderTest() { appender.setPort(receiver.port()); }

  Workplace workplace;
  DatagramReceiver receiver;
  LOGLocalUDPAppender appender;
};

/// A renderer whose record of a message is as long as the message says.
class SizedRenderer : public LOGDefaultRenderer {
 public:
  void writeObject(LOGObject* object, LOGRecordStream& stream) override {
    for (int i = std::stoi(object->toString().toStdString()); i > 0; --i) {
      stream.writeByte('x');
    }
  }
};

}  // namespace

TEST(SyslogFacility, IsTheNumberTimesEightInEitherDirection) {
  for (const auto& [code, name] :
       {std::pair(0, "kern"), {80, "authpriv"}, {88, "ftp"}, {128, "local0"}, {184, "local7"}}) {
    EXPECT_EQ(LOGSyslogAppender::getFacilityString(code), name);
    EXPECT_EQ(LOGSyslogAppender::getFacility(name), code);
  }
  EXPECT_EQ(LOGSyslogAppender::getFacility(""), -1);
  EXPECT_EQ(LOGSyslogAppender::getFacility("LocaL3"), 152);
  for (const int other : {-8, 1, 96, 192}) {
    EXPECT_EQ(LOGSyslogAppender::getFacilityString(other), "");
  }
}

TEST_F(SyslogAppenderTest, PutsFacilityAndNameInFrontOfTheMessage) {
  DatagramReceiver daemon("127.0.0.2", SYSLOG_PORT);
  appender.setSyslogHost("127.0.0.2");
  log(appender, "as user");
  appender.setFacility("LOCAL3");
  log(appender, std::string("z\xC3\xA9\xE2\x82\xAC") + EMOJI);
  appender.setFacility("");
  EXPECT_EQ(appender.getFacility(), "local3:");
  appender.setFacilityPrinting(1);
  appender.setFacility("mail");
  log(appender, "printed");
  appender.setFacility("nosuch");
  log(appender, "fallback");
  EXPECT_EQ(daemon.next(), "<8>as user");
  EXPECT_EQ(daemon.next(), std::string("<152>z\xC3\xA9\xE2\x82\xAC") + EMOJI);
  EXPECT_EQ(daemon.next(), "<16>mail:printed");
  EXPECT_EQ(daemon.next(), "<8>user:fallback");
  EXPECT_EQ(LOGSyslogAppender(&layout, 96).getFacility(), "user:");
}

TEST_F(SyslogAppenderTest, SendsToThisMachineWithoutAHost) {
  DatagramReceiver daemon("127.0.0.1", SYSLOG_PORT);
  log(appender, "here");
  EXPECT_EQ(daemon.next(), "<8>here");
  EXPECT_EQ(appender.getSyslogHost(), "");
}

TEST_F(SyslogAppenderTest, ReachesAHostThatHasOnlyIPv6) {
  DatagramReceiver daemon("::1", SYSLOG_PORT);
  appender.setSyslogHost("::1");
  log(appender, "six");
  EXPECT_EQ(daemon.next(), "<8>six");
}

TEST_F(SyslogAppenderTest, SendsAThrowableAsASecondDatagram) {
  DatagramReceiver daemon("127.0.0.3", SYSLOG_PORT);
  LOGSyslogAppender made(&layout, "127.0.0.3", 24);
  TestEvent event("a.b", "ERROR", "failed");
  event.setThrowableStrRep("at line 3");
  log(made, event);
  EXPECT_EQ(daemon.next(), "<24>failed");
  EXPECT_EQ(daemon.next(), "<24>\tat line 3");
  EXPECT_TRUE(daemon.isSilent());
}

TEST_F(SyslogAppenderTest, ReportsWhatItCannotSend) {
  LOGSyslogAppender bare;
  bare.setName("bare");
  TestEvent event("a.b", "INFO", "lost");
  bare.doAppend(&event);
  EXPECT_EQ(Workplace::noted("No syslog host is set for LOGSyslogAppedender named [bare]"), 1);
  log(bare, "lost");
  EXPECT_EQ(Workplace::noted("LOGSyslogAppender::append --- m_layout is NULL. append canceled"), 1);

  appender.setSyslogHost("no-such-host.invalid");
  log(appender, "lost");
  log(appender, "lost");
  EXPECT_EQ(Workplace::noted("LOGSyslogWriter::init --- Error in converting address."), 1);
  EXPECT_EQ(
      Workplace::noted("LOGSyslogWriter::write --- Could not send data to no-such-host.invalid"),
      2);

  DatagramReceiver daemon("127.0.0.4", SYSLOG_PORT);
  appender.setSyslogHost("127.0.0.4");
  log(appender, std::string(66000, 'x'));
  EXPECT_EQ(Workplace::noted("Could not send data to 127.0.0.4"), 1);
  log(appender, std::string(65000, 'x'));
  EXPECT_EQ(daemon.next(), "<8>" + std::string(65000, 'x'));

  // The host of the failure is that of the last writer, whichever it belongs to.
  LOGSyslogAppender other(&layout, "", 8);
  log(appender, std::string(66000, 'x'));
  EXPECT_EQ(Workplace::noted("Could not send data to the localhost"), 1);
}

TEST_F(SyslogAppenderTest, FreesItsSocketAndStaysClosed) {
  DatagramReceiver daemon("127.0.0.5", SYSLOG_PORT);
  const long before = openSockets();
  appender.setSyslogHost("127.0.0.5");
  appender.setSyslogHost("127.0.0.5");
  log(appender, "one");
  EXPECT_EQ(openSockets(), before + 1);
  appender.close();
  appender.setSyslogHost("127.0.0.5");
  log(appender, "refused");
  EXPECT_EQ(openSockets(), before);
  LOGSyslogAppender neverActivated(&layout, 8);
  neverActivated.close();
  log(neverActivated, "refused");
  EXPECT_EQ(openSockets(), before);
  EXPECT_EQ(Workplace::noted("Attempted to append to closed appender"), 2);

  LOGSyslogAppender closing(&layout, "127.0.0.5", 8);
  ActingMessage message("too late", [&closing] { closing.close(); });
  TestEvent event("a.b", "INFO", &message);
  log(closing, event);
  EXPECT_EQ(daemon.next(), "<8>one");
  EXPECT_TRUE(daemon.isSilent());
}

TEST_F(LocalUDPAppenderTest, SendsTheRecordThatAJavaProgramReads) {
  log(appender, "hi");
  EXPECT_EQ(receiver.next(), knownRecord());
}

TEST_F(LocalUDPAppenderTest, SendsWhatTheLogCallHasRendered) {
  int renderings = 0;
  const ActingMessage message("once", [&] { ++renderings; });
  LOGLogger* const logger = LOGManager::getLogger("udp");
  logger->setAdditivity(0);
  logger->addAppender(&appender);
  ActingMessage own(message);
  logger->info(&own);
  logger->removeAppender(&appender);
  EXPECT_EQ(messageOf(receiver.next().value_or("")), "once");
  EXPECT_EQ(renderings, 1) << "by the log call, and not under locks";
}

TEST_F(LocalUDPAppenderTest, EncodesCodeUnitsAsJavaDoes) {
  const char16_t text[] = {u'a', 0, 0xE9, 0x20AC, 0xD83D, 0xDE00, 0xDC00};
  LOGObject message(I18NString(text, 7));
  TestEvent event("a.b", "INFO", &message);
  log(appender, event);
  const std::string encoded("a\xC0\x80\xC3\xA9\xE2\x82\xAC\xED\xA0\xBD\xED\xB8\x80\xED\xB0\x80");
  const std::string datagram = receiver.next().value_or("");
  EXPECT_NE(datagram.find('\x11' + encoded + '\x78'), std::string::npos);
  EXPECT_EQ(messageOf(datagram),
            std::string("a\0\xC3\xA9\xE2\x82\xAC", 7) + EMOJI + "\xEF\xBF\xBD");
}

TEST_F(LocalUDPAppenderTest, CutsAMessageBetweenCharacters) {
  for (std::size_t shift = 0; shift < 6; ++shift) {
    std::string text(shift, 'x');
    for (int i = 0; i < 20000; ++i) {
      text += EMOJI;
    }
    log(appender, text);
    const std::string datagram = receiver.next().value_or("");
    EXPECT_LE(datagram.size(), LOGRecordStream::CAPACITY);
    EXPECT_GT(datagram.size(), LOGRecordStream::CAPACITY - 6);
    const std::string message = messageOf(datagram);
    EXPECT_EQ(message, text.substr(0, message.size()));
    EXPECT_EQ((message.size() - shift) % 4, 0U);
  }
  log(appender, std::string(200000, 'y'));
  EXPECT_EQ(receiver.next().value_or("").size(), LOGRecordStream::CAPACITY);
  TestEvent endlessName(std::string(65600, 'n'), "INFO", "hi");
  log(appender, endlessName);
  EXPECT_TRUE(receiver.isSilent());
}

TEST_F(LocalUDPAppenderTest, SendsNoRecordThatDoesNotFit) {
  LOGRendererMap map;
  map.put("Sized", new SizedRenderer);
  const int room = static_cast<int>(LOGRecordStream::CAPACITY) - 46;  // with logger a.b
  for (const int size : {room, room + 1, room + 1000}) {
    LOGObject message(I18NString(std::to_string(size)));
    message.instance("Sized");
    TestEvent event("a.b", "INFO", &message);
    log(appender, event);
  }
  map.clear();
  log(appender, "hi");
  const std::string whole = receiver.next().value_or("");
  EXPECT_EQ(whole.size(), LOGRecordStream::CAPACITY);
  EXPECT_EQ(RecordDecoder::decode(whole)->content.size(), static_cast<std::size_t>(room));
  EXPECT_EQ(receiver.next(), knownRecord());
}

TEST_F(LocalUDPAppenderTest, KeepsRecordsApartWhenAMessageLogsWhileItIsRendered) {
  ActingMessage message("outer", [this] { log(appender, "inner"); });
  TestEvent event("a.b", "INFO", &message);
  log(appender, event);
  EXPECT_EQ(messageOf(receiver.next()), "inner");
  EXPECT_EQ(messageOf(receiver.next()), "outer");
}

TEST_F(LocalUDPAppenderTest, TriesAFailedActivationAgainAfterASecond) {
  const long before = openSockets();
  const int port = appender.getPort();
  appender.setPort(70000);
  const auto start = std::chrono::steady_clock::now();
  log(appender, "lost");
  EXPECT_EQ(openSockets(), before);
  appender.setPort(port);
  while (openSockets() == before) {
    log(appender, "try");
    ASSERT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
  }
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
  EXPECT_EQ(messageOf(receiver.next()), "try");
}

TEST_F(LocalUDPAppenderTest, KeepsItsSocketUntilItIsDestroyed) {
  const auto [before, inheritedBefore] = OpenSockets::count();
  {
    LOGLocalUDPAppender first(appender);
    EXPECT_TRUE(first == appender);
    log(first, "one");
    log(first, "two");
    LOGLocalUDPAppender second(first);
    EXPECT_EQ(openSockets(), before + 1);
    log(second, "three");
    EXPECT_EQ(openSockets(), before + 2);
    EXPECT_EQ(OpenSockets::count().inherited, inheritedBefore);
    first.setPort(1);
    EXPECT_TRUE(first != second);
    second = first;
    EXPECT_EQ(openSockets(), before + 1);
    first.close();
    log(first, "refused");
    EXPECT_EQ(openSockets(), before + 1);
    second.close();
    second.activateOptions();
    EXPECT_EQ(openSockets(), before + 1);
  }
  EXPECT_EQ(openSockets(), before);
  for (const char* const text : {"one", "two", "three"}) {
    EXPECT_EQ(messageOf(receiver.next()), text);
  }
  EXPECT_TRUE(receiver.isSilent());
}

TEST(NetworkAppenders, AreClosedWhileOthersLog) {
  const Workplace workplace;
  LOGPatternLayout layout("%m");
  LOGSyslogAppender syslog(&layout, "127.0.0.6", 8);
  LOGLocalUDPAppender records;
  Threads threads(4, [&](int) {
    for (int n = 0; n < 200; ++n) {
      log(syslog, "text");
      log(records, "text");
    }
  });
  syslog.setSyslogHost("127.0.0.7");
  syslog.close();
  records.close();
  threads.join();
  const char* const refusal = "Attempted to append to closed appender";
  const auto refusedBefore = Workplace::noted(refusal);
  log(syslog, "refused");
  log(records, "refused");
  EXPECT_EQ(Workplace::noted(refusal), refusedBefore + 2);
}

TEST(NetworkAppenders, AreConfiguredByADocument) {
  Workplace workplace;
  DatagramReceiver daemon("127.0.0.8", SYSLOG_PORT);
  DatagramReceiver records;
  using documents::appender;
  using documents::param;
  ASSERT_EQ(
      Workplace::configure(
          appender("S", "LOGSyslogAppender",
                   param("Host", "127.0.0.8") + param("Facility", "Cron") +
                       documents::pattern("%p %m")) +
          appender("U", "LogLocalUDPAppender", param("Port", std::to_string(records.port()))) +
          appender("T", "LogTCPSocketAppender",
                   param("REMOTEHOST", "far.example") + param("port", "77x") +
                       param("locationINFO", "yes") + param("Secure", "FALSE") +
                       param("reconnectiondelay", "250")) +
          documents::root({"S", "U", "T"})),
      1);
  LOGLogger* const root = LOGManager::getRootLogger();
  root->warn("hello");
  root->warn("again");
  EXPECT_EQ(daemon.next(), "<72>WARN hello");
  EXPECT_EQ(messageOf(records.next()), "hello");
  const auto* const tcp = dynamic_cast<LOGTCPSocketAppender*>(root->getAppender("T"));
  ASSERT_NE(tcp, nullptr);
  EXPECT_EQ(tcp->getRemoteHost(), "far.example");
  EXPECT_EQ(tcp->getPort(), 77);
  EXPECT_EQ(tcp->getLocationInfo(), 1);
  EXPECT_EQ(tcp->getSecure(), 0);
  EXPECT_EQ(tcp->getReconnectionDelay(), 250);
  EXPECT_EQ(Workplace::noted("named [T] are not sent"), 1);
}

TEST(RendererMap, RendersWithTheDefaultThatIsSet) {
  class Fixed : public LOGDefaultRenderer {
    I18NString* doRender(LOGObject*) override { return new I18NString("fixed"); }
  };
  LOGRendererMap map;
  LOGObject message(I18NString("own"));
  const auto rendered = [&] { return std::unique_ptr<I18NString>(map.findAndRender(&message)); };
  LOGObjectRenderer* const original = map.getDefaultRenderer();
  auto* const fixed = new Fixed;
  map.setDefaultRenderer(fixed);
  map.put("Other", fixed);  // owned by both entries
  EXPECT_EQ(*rendered(), "fixed");
  map.setDefaultRenderer(nullptr);
  EXPECT_EQ(rendered(), nullptr);
  EXPECT_EQ(map.get("Other"), fixed);
  map.setDefaultRenderer(original);
  map.clear();
  EXPECT_EQ(*rendered(), "own");
}

TEST(RecordDecoder, RefusesEverythingButAWholeRecord) {
  const std::string& whole = knownRecord();
  const auto record = RecordDecoder::decode(whole);
  ASSERT_TRUE(record);
  EXPECT_EQ(record->logger + "|" + record->className + "|" + record->message.value_or("-"),
            "a.b|LOGObject|hi");
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_FALSE(RecordDecoder::decode(whole.substr(0, size))) << size;
  }
  EXPECT_FALSE(RecordDecoder::decode(whole + "x"));
  std::mt19937 random(1);
  for (int i = 0; i < 20000; ++i) {
    std::string bytes = whole.substr(0, random() % 4 == 0 ? 1 + random() % 49 : 50);
    for (unsigned changes = random() % 4 + 1; changes > 0; --changes) {
      bytes[random() % bytes.size()] = static_cast<char>(random());
    }
    // Whatever comes is one line of valid JSON characters.
    for (const auto form : {DatagramLine::Form::Text, DatagramLine::Form::Json}) {
      const std::string line =
          DatagramLine::ofRecord(bytes, "x", form) + DatagramLine::ofSyslog(bytes, "x", form);
      ASSERT_EQ(line.find_first_of(std::string("\0\n\r\t\x1B\x7F", 6)), std::string::npos);
    }
  }
}

TEST(DatagramLine, ReadsPrioritiesAndEscapes) {
  const auto text = [](const std::string& bytes) {
    return DatagramLine::ofSyslog(bytes, "h:1", DatagramLine::Form::Text);
  };
  const auto json = [](const std::string& bytes) {
    return DatagramLine::ofSyslog(bytes, "h:1", DatagramLine::Form::Json);
  };
  EXPECT_EQ(text("<152>mail:x\r\n"), "syslog local3.emerg: mail:x");
  EXPECT_EQ(text("<191>\x1B[1m\tz\xC2\x9B\xC3\xA9"),
            "syslog local7.debug: \\x1b[1m\\tz\\x9b\xC3\xA9");
  EXPECT_EQ(text("<103>x"), "syslog 12.debug: x");
  for (const char* const bytes : {"<192>", "<>x", "<1x>", "<0001>", "<12", "x<8>", "", "<-1>"}) {
    EXPECT_EQ(text(bytes), std::string("syslog without priority: ") + bytes);
  }
  EXPECT_EQ(json("<16>a\"\\\r\n\x01\xFF"),
            "{\"kind\":\"syslog\",\"from\":\"h:1\",\"priority\":16,\"facility\":\"mail\","
            "\"severity\":\"emerg\",\"message\":\"a\\\"\\\\\\r\\n\\u0001\xEF\xBF\xBD\"}");
  EXPECT_EQ(json("x"),
            "{\"kind\":\"syslog\",\"from\":\"h:1\",\"priority\":null,\"message\":\"x\"}");
  EXPECT_EQ(DatagramLine::ofRecord(knownRecord(), "h:1", DatagramLine::Form::Json),
            "{\"kind\":\"record\",\"from\":\"h:1\",\"logger\":\"a.b\",\"class\":\"LOGObject\","
            "\"message\":\"hi\"}");
}
