// Events on their way through a datagram. The input is two bytes of room and one for the level and
// facility, then a line for the logger; what follows is the message. Each event goes through the
// appender of records and that of syslog, and what they send is read by the command's decoders; the
// message is also written into a record without room for all of it.
//
// Expected beyond not failing: what was logged is what is read, and what is cut is cut as late as
// possible, between two characters.

#include <iterator>
#include <string>
#include <vector>

#include "core/LOGLogger.h"
#include "core/LOGLoggingEvent.h"
#include "layouts/LOGPatternLayout.h"
#include "net/LOGLocalUDPAppender.h"
#include "net/LOGSyslogAppender.h"
#include "rendering/LOGRecordStream.h"
#include "support/Expect.h"
#include "support/FreshHierarchy.h"
#include "support/FuzzInput.h"
#include "support/SealedSystem.h"
#include "tools/RecordDecoder.h"
#include "tools/SyslogDecoder.h"

namespace {

// Each component of a name costs the hierarchy an entry.
constexpr std::size_t LONGEST_NAME = 64;

constexpr int RANKS[] = {LOGLevel::DEBUG_RANK, LOGLevel::INFO_RANK, LOGLevel::WARN_RANK,
                         LOGLevel::ERROR_RANK, LOGLevel::FATAL_RANK};
constexpr const char* FACILITIES[] = {"kern", "user", "cron", "ftp", "local0", "local7", "none"};

std::string theDatagram() {
  const std::vector<std::string> sent = SealedSystem::takeDatagrams();
  expect(sent.size() == 1, "an event is a datagram");
  return sent.front();
}

void sendAsRecord(LOGLoggingEvent& event, const I18NString& message) {
  static auto* const appender = new LOGLocalUDPAppender;
  appender->activateOptions();
  appender->doAppend(&event);
  const auto record = RecordDecoder::decode(theDatagram());
  expect(record.has_value(), "a record that was sent can be read");
  expect(record->logger == event.getLoggerName().toStdString(), "the logger arrives");
  expect(record->message == message.toStdString(), "the message arrives");
}

void sendAsSyslog(LOGLoggingEvent& event, const I18NString& message, const char* facility) {
  static auto* const layout = new LOGPatternLayout("%m");
  static auto* const appender = new LOGSyslogAppender(layout, "127.0.0.1", 0);
  appender->setFacility(facility);
  appender->doAppend(&event);
  const SyslogDecoder::Message read = SyslogDecoder::decode(theDatagram());
  const int code = LOGSyslogAppender::getFacility(facility);
  // The severity is not sent.
  expect(read.priority == (code == -1 ? LOGSyslogAppender::DEFAULT_FACILITY : code),
         "the facility arrives");
  expect(read.text == message.toStdString(), "the text arrives");
}

/// How many bytes the code unit takes in a record.
std::size_t encodedSize(char16_t unit) {
  if (unit >= 0x01 && unit <= 0x7F) {
    return 1;
  }
  return unit <= 0x7FF ? 2 : 3;
}

bool isHighSurrogate(char16_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool isLowSurrogate(char16_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

/// Writes the text into a record with that much room.
void writeCut(const I18NString& text, std::size_t room) {
  constexpr std::size_t LENGTH_BYTES = 2;
  static auto* const stream = new LOGRecordStream;
  stream->reset(LOGRecordStream::CAPACITY - room);
  stream->writeUTFCut(text);
  if (room < LENGTH_BYTES) {
    expect(stream->fits() == 0 && stream->size() == 0, "without room nothing is written");
    return;
  }
  const std::u16string units = text.toUtf16();
  std::size_t kept = 0;
  std::size_t size = 0;
  for (std::size_t next = 0; next < units.size(); kept = next) {
    std::size_t character = encodedSize(units[next++]);
    if (isHighSurrogate(units[next - 1]) && next < units.size() && isLowSurrogate(units[next])) {
      character += encodedSize(units[next++]);
    }
    if (size + character > room - LENGTH_BYTES) {
      break;
    }
    size += character;
  }
  expect(stream->fits() == 1 && stream->size() == size + LENGTH_BYTES,
         "as many characters are written as there is room for");
  const bool isWhole = kept == units.size();
  stream->reset(LOGRecordStream::CAPACITY - room);
  stream->writeUTF(text);
  expect((stream->fits() == 1) == isWhole && stream->size() == (isWhole ? size + LENGTH_BYTES : 0),
         "a text that is not to be cut is written whole or not at all");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzInput input(data, size);
  std::size_t room = input.byte();
  room += 4 * input.byte();
  const unsigned int choice = input.byte();
  FreshHierarchy hierarchy;
  LOGLogger* const logger =
      hierarchy.get().getLogger(I18NString::fromUtf8(input.line().substr(0, LONGEST_NAME)));
  const I18NString message = I18NString::fromUtf8(input.rest());
  LOGLoggingEvent event(logger, LOGLevel::toLevel(RANKS[choice % std::size(RANKS)]),
                        LOGMessageText{message});
  sendAsRecord(event, message);
  sendAsSyslog(event, message, FACILITIES[choice / 8 % std::size(FACILITIES)]);
  writeCut(message, room);
  return 0;
}
