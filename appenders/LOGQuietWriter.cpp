#include "appenders/LOGQuietWriter.h"

#include <string>
#include <string_view>

#include "appenders/LOGWriter.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBFmFile.h"
#include "platform/ZEBSystemError.h"

namespace {

constexpr const char* SOURCE = "LOGQuietWriter";
constexpr const char* FILE_ERROR_SOURCE = "LOGQuietWriter::throwFileError";
constexpr int FILE_ERROR_LINE = 191;
constexpr const char* WRITE_FAILED = "LOGQuietWriter::write -- ZEBThrowable exception occurred";

}  // namespace

LOGQuietWriter::LOGQuietWriter(LOGErrorHandler* eh, ZEBFmFile* file)
    : errorHandler(eh), writer(nullptr) {
  setFile(file);
  if (file != nullptr) {
    file->setLateFailureText(WRITE_FAILED);
  }
}

LOGQuietWriter::LOGQuietWriter(LOGWriter* w, LOGErrorHandler* eh) : errorHandler(eh), writer(w) {}

LOGQuietWriter::~LOGQuietWriter() = default;

void LOGQuietWriter::write(const I18NString& s) {
  if (writer != nullptr && !s.isEmpty()) {
    writer->write(s);
  }
}

LOG4ZEB_HOT void LOGQuietWriter::write(ZEBFmFile* outStream, const I18NString& s) {
  if (s.isEmpty()) {
    return;
  }
  constexpr LOGFailureTexts TEXTS{"LOGQuietWriter::write -- I18nstring exception occurred",
                                  WRITE_FAILED, "LOGQuietWriter::write -- Unknown error occurred"};
  logReportingFailures(TEXTS, [&] {
    ZEB_ASSERT_AS(outStream, "outStream != NULL", SOURCE, 70);
    appendBytes(*outStream, s);
  });
}

void LOGQuietWriter::stWrite(ZEBFmFile* outStream, const I18NString& s) {
  if (s.isEmpty()) {
    return;
  }
  constexpr LOGFailureTexts TEXTS{"LOGQuietWriter::stWrite -- I18nstring exception occurred",
                                  "LOGQuietWriter::stWrite -- ZEBThrowable exception occurred",
                                  "LOGQuietWriter::stWrite -- Unknown error occurred"};
  logReportingFailures(TEXTS, [&] {
    ZEB_ASSERT(outStream, SOURCE, 113);
    appendBytes(*outStream, s);
    if (outStream->flush() == 0) {
      throwFileError(outStream);
    }
  });
}

LOG4ZEB_HOT std::size_t LOGQuietWriter::appendBytes(ZEBFmFile& file, const I18NString& s) {
  if (s.hasLoneSurrogate()) {
    return appendBytes(file, I18NString(s.toStdString()));
  }
  std::string_view bytes = s.utf8();
  if (bytes.back() == '\0') {
    bytes.remove_suffix(1);
  }
  if (file.write(bytes.data(), bytes.size()) == -1) {
    throwFileError(&file);
  }
  return bytes.size();
}

void LOGQuietWriter::flush(ZEBFmFile* outStream) {
  ZEB_ASSERT_AS(outStream, "outStream != NULL", SOURCE, 56);
  logReportingFailures(
      LOGFailureTexts::same("LOGQuietWriter::flush -- ZEBThrowable exception occurred"), [&] {
        if (outStream->isOpen() != 0 && outStream->flush() == 0) {
          throwFileError(outStream);
        }
      });
}

void LOGQuietWriter::close(ZEBFmFile* outStream) {
  ZEB_ASSERT_AS(outStream, "outStream != NULL", SOURCE, 62);
  logReportingFailures(
      LOGFailureTexts::same("LOGQuietWriter::close -- ZEBThrowable exception occurred"), [&] {
        handOver(*outStream);
        if (outStream->isOpen() != 0 && outStream->close() == 0) {
          throwFileError(outStream);
        }
      });
}

void LOGQuietWriter::flush() {
  if (writer != nullptr) {
    writer->flush();
  }
}

void LOGQuietWriter::close() {
  if (writer != nullptr) {
    writer->flush();
    delete writer;
    writer = nullptr;
  }
}

void LOGQuietWriter::throwFileError(ZEBFmFile* file) {
  ZEB_ASSERT_AS(file, "file != NULL", SOURCE, 185);
  throw ZEBSystemError(file->getName(), file->getLastError(), FILE_ERROR_SOURCE, FILE_ERROR_LINE);
}

void LOGQuietWriter::hold(ZEBFmHold& hold, ZEBFmFile& file) {
  if (!hold.isOf(file)) {
    handOver(hold);
  }
  hold.begin(file);
}

void LOGQuietWriter::report(const ZEBFmFile::Losses& losses) {
  for (int i = 0; i < losses.records; ++i) {
    ZEBSystemError error(losses.fileName, losses.error, FILE_ERROR_SOURCE, FILE_ERROR_LINE);
    logReportSwallowed(losses.text, error);
  }
}
