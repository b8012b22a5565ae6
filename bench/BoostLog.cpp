#include "bench/BoostLog.h"

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <boost/log/attributes/clock.hpp>
#include <boost/log/attributes/current_thread_id.hpp>
#include <boost/log/core.hpp>
#include <boost/log/expressions.hpp>
#include <boost/log/sinks/sync_frontend.hpp>
#include <boost/log/sinks/text_ostream_backend.hpp>
#include <boost/log/sources/record_ostream.hpp>
#include <boost/log/sources/severity_channel_logger.hpp>
#include <boost/log/support/date_time.hpp>
#include <boost/log/trivial.hpp>
#include <boost/smart_ptr/make_shared.hpp>
#include <fstream>
#include <string>

#include "bench/Workload.h"

namespace logging = boost::log;

namespace {

using Severity = logging::trivial::severity_level;
using Sink = logging::sinks::synchronous_sink<logging::sinks::text_ostream_backend>;
using Logger = logging::sources::severity_channel_logger_mt<Severity, std::string>;

boost::shared_ptr<Sink> makeSink(const std::string& file, bool flushesEach) {
  namespace expr = logging::expressions;
  auto backend = boost::make_shared<logging::sinks::text_ostream_backend>();
  backend->add_stream(boost::make_shared<std::ofstream>(file));
  backend->auto_flush(flushesEach);
  auto sink = boost::make_shared<Sink>(backend);
  sink->set_formatter(expr::stream
                      << expr::format_date_time<boost::posix_time::ptime>("TimeStamp",
                                                                          "%Y-%m-%d %H:%M:%S,%f")
                      << " ["
                      << expr::attr<logging::attributes::current_thread_id::value_type>("ThreadID")
                      << "] " << expr::attr<Severity>("Severity") << ' '
                      << expr::attr<std::string>("Channel") << " - " << expr::smessage);
  return sink;
}

}  // namespace

struct BoostLog::Parts {
  boost::shared_ptr<Sink> sink;
  Logger logger{logging::keywords::channel = std::string(workload::LOGGER)};
};

BoostLog::BoostLog(const std::filesystem::path& directory, Delivery delivery)
    : m_parts(std::make_unique<Parts>()) {
  const auto core = logging::core::get();
  core->add_global_attribute("TimeStamp", logging::attributes::local_clock());
  core->add_global_attribute("ThreadID", logging::attributes::current_thread_id());
  m_parts->sink = makeSink((directory / "boost.log").string(), delivery == Delivery::Kernel);
  core->add_sink(m_parts->sink);
}

BoostLog::~BoostLog() = default;

void BoostLog::log() {
  BOOST_LOG_SEV(m_parts->logger, logging::trivial::info) << workload::MESSAGE;
}

void BoostLog::finish() {
  logging::core::get()->remove_sink(m_parts->sink);
  m_parts->sink->flush();
  m_parts.reset();
}
