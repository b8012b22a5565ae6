#include "appenders/LOGCountingQuietWriter.h"

#include "platform/ZEBAssertError.h"
#include "platform/ZEBThreadRWGuard.h"

LOGCountingQuietWriter::LOGCountingQuietWriter(LOGErrorHandler* eh, ZEBFmFile* file)
    : LOGQuietWriter(eh, file) {}

void LOGCountingQuietWriter::write(ZEBFmFile* outStream, const I18NString& s) {
  if (s.isEmpty()) {
    return;
  }
  constexpr LOGFailureTexts TEXTS{
      "LOGCountingQuietWriter::write -- I18nstring exception occurred",
      "LOGCountingQuietWriter::write -- ZEBThrowable exception occurred",
      "LOGCountingQuietWriter::write -- Unknown error occurred"};
  logReportingFailures(TEXTS, [&] {
    ZEB_ASSERT(outStream != NULL, "LOGCountingQuietWriter",
               52);  // NOLINT(modernize-use-nullptr): the text
    const ZEBThreadRWGuard guard(*this, ZEBThreadRWGuard::WRITING);
    count += static_cast<unsigned int>(appendBytes(*outStream, s));
  });
}
