#include "bench/LogCatalogue.h"

#include "bench/BareWriteLog.h"
#include "bench/BoostLog.h"
#include "bench/GlogLog.h"
#include "bench/Log4zebLog.h"
#include "bench/QuillLog.h"
#include "bench/SpdlogLog.h"

namespace {

namespace fs = std::filesystem;

using Delivery = LogUnderTest::Delivery;
using Log = std::unique_ptr<LogUnderTest>;

Log makeSynchronous(const std::string& library, const fs::path& directory, Delivery delivery) {
  if (library == "log4zeb") {
    Log4zebLog::Setup setup;
    setup.delivery = delivery;
    return std::make_unique<Log4zebLog>(directory, setup);
  }
  if (library == "spdlog") {
    return std::make_unique<SpdlogLog>(directory, SpdlogLog::Sink::MultiThreaded, delivery);
  }
  if (library == "glog") {
    return std::make_unique<GlogLog>(directory, delivery);
  }
  return library == "boost_log" ? std::make_unique<BoostLog>(directory, delivery) : nullptr;
}

/// The library with the file as a document makes it, spdlog with its default file.
Log makeAsynchronous(const std::string& library, const fs::path& directory) {
  if (library == "log4zeb") {
    Log4zebLog::Setup setup;
    setup.isAsynchronous = true;
    return std::make_unique<Log4zebLog>(directory, setup);
  }
  if (library == "spdlog") {
    return std::make_unique<SpdlogLog>(directory, SpdlogLog::Sink::MultiThreaded,
                                       Delivery::Buffered, SpdlogLog::Caller::Queues);
  }
  return library == "quill" ? QuillLog::make(directory) : nullptr;
}

}  // namespace

Log LogCatalogue::make(const std::string& name, const fs::path& directory) {
  if (name == "bare_write") {
    return std::make_unique<BareWriteLog>(directory);
  }
  const std::size_t separator = name.rfind('_');
  if (separator == std::string::npos) {
    return nullptr;
  }
  const std::string library = name.substr(0, separator);
  const std::string mode = name.substr(separator + 1);
  if (mode == "async") {
    return makeAsynchronous(library, directory);
  }
  if (mode == "kernel" || mode == "buffered") {
    return makeSynchronous(library, directory,
                           mode == "kernel" ? Delivery::Kernel : Delivery::Buffered);
  }
  return nullptr;
}
