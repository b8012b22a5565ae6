#include "bench/GlogLog.h"

#include <glog/logging.h>

#include "bench/Workload.h"

GlogLog::GlogLog(const std::filesystem::path& directory, Delivery delivery) {
  if (!google::IsGoogleLoggingInitialized()) {
    google::InitGoogleLogging("bench");
  }
  FLAGS_logbuflevel = delivery == Delivery::Kernel ? -1 : 0;
  google::SetLogSymlink(google::GLOG_INFO, "");
  google::SetLogDestination(google::GLOG_INFO, (directory / "glog.").string().c_str());
}

void GlogLog::log() { LOG(INFO) << workload::LOGGER << " - " << workload::MESSAGE; }

void GlogLog::finish() { google::FlushLogFiles(google::GLOG_INFO); }
