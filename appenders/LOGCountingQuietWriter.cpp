#include "appenders/LOGCountingQuietWriter.h"

#include "platform/ZEBAssertError.h"

namespace {

constexpr const char* WRITE_FAILED =
    "LOGCountingQuietWriter::write -- ZEBThrowable exception occurred";

}  // namespace

LOGCountingQuietWriter::LOGCountingQuietWriter(LOGErrorHandler* eh, ZEBFmFile* file)
    : LOGQuietWriter(eh, file) {
  if (file != nullptr) {
    file->setLateFailureText(WRITE_FAILED);
  }
}

void LOGCountingQuietWriter::write(ZEBFmFile* outStream, const I18NString& s) {
  if (s.isEmpty()) {
    return;
  }
  constexpr LOGFailureTexts TEXTS{"LOGCountingQuietWriter::write -- I18nstring exception occurred",
                                  WRITE_FAILED,
                                  "LOGCountingQuietWriter::write -- Unknown error occurred"};
  logReportingFailures(TEXTS, [&] {
    ZEB_ASSERT_AS(outStream, "outStream != NULL", "LOGCountingQuietWriter", 52);
    count += static_cast<unsigned int>(appendBytes(*outStream, s));
  });
}

void LOGCountingQuietWriter::settle(ZEBFmFile* file) {
  handOver(*file);
  // What was lost while it waited was counted before.
  count -= static_cast<unsigned int>(file->takeLostBytes());
}
