#include "bench/QuietLoggers.h"

#include <spdlog/sinks/null_sink.h>
#include <spdlog/spdlog.h>

#include "log4zeb.h"

LOGLogger* QuietLoggers::log4zeb() {
  LOGManager::getRootLogger()->setLevel(LOGLevel::toLevel(LOGLevel::INFO_RANK));
  for (const char* ancestor : {"app", "app.db", "app.db.tx"}) {
    LOGManager::getLogger(ancestor);
  }
  return LOGManager::getLogger("app.db.tx.rollback");
}

std::shared_ptr<spdlog::logger> QuietLoggers::spdlog(const std::string& name) {
  static const auto sink = std::make_shared<spdlog::sinks::null_sink_mt>();
  auto logger = std::make_shared<spdlog::logger>(name, sink);
  logger->set_level(spdlog::level::info);
  return logger;
}

void QuietLoggers::registerWithBoth(int count) {
  for (int number = 0; number < count; ++number) {
    spdlog::register_logger(spdlog(name(number)));
  }
  for (int number = 0; number < count; ++number) {
    LOGManager::getLogger(name(number));
  }
}

std::string QuietLoggers::name(int number) {
  return "app" + std::to_string(number % 10) + ".part" + std::to_string(number % 1000) + ".class" +
         std::to_string(number);
}
