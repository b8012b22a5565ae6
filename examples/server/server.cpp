// A simulated server: several threads take requests from one queue and log what they do through the
// loggers server.io, server.request and server.db. Each request is named in the thread's diagnostic
// context, so that every line it causes can be told apart from those of the other threads.
//
//   server DOCUMENT REQUESTS

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "log4zeb.h"

namespace {

constexpr int WORKERS = 4;

/// The next request waits here for whichever worker is free.
class Queue {
 public:
  explicit Queue(int requests) : m_requests(requests) {}
  /// The number of the next request, from 1 on; 0 when there is none left.
  int take() {
    const int number = ++m_taken;
    return number <= m_requests ? number : 0;
  }

 private:
  const int m_requests;
  std::atomic<int> m_taken{0};
};

/// One thread's work. What happens in a request follows from its number, so that two runs log the
/// same.
class Worker {
 public:
  explicit Worker(Queue& queue) : m_queue(queue) {}

  void run() {
    int handled = 0;
    while (const int request = m_queue.take()) {
      handle(request);
      ++handled;
    }
    LOG4ZEB_INFO(m_io, "worker ends after " << handled << " requests");
  }

 private:
  void handle(int request) {
    LOG4ZEB_NDC_SCOPE("request " + std::to_string(request));
    std::minstd_rand chance(static_cast<unsigned>(request));
    chance.discard(3);
    LOG4ZEB_DEBUG(m_io, "accepted " << chance() % 4096 << " bytes");
    LOG4ZEB_INFO(m_requestLog, "GET /articles/" << chance() % 1000);
    try {
      query(chance);
      LOG4ZEB_INFO(m_requestLog, "answered 200");
    } catch (const std::runtime_error& failure) {
      LOG4ZEB_ERROR(m_requestLog, "answered 500: " << failure.what());
    }
  }

  void query(std::minstd_rand& chance) {
    LOG4ZEB_NDC_SCOPE("query");
    const auto milliseconds = chance() % 3;
    LOG4ZEB_DEBUG(m_db, "SELECT title, text FROM articles, pool of " << chance() % 8 + 1);
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    const auto luck = chance() % 1000;
    if (luck < 2) {
      throw std::runtime_error("the database closed the connection");
    }
    if (luck < 6) {
      LOG4ZEB_WARN(m_db, "slow query, " << 100 * luck << " ms");
    }
    LOG4ZEB_DEBUG(m_db, "1 row after " << milliseconds << " ms");
  }

  Queue& m_queue;
  LOGLogger* const m_io = LOGManager::getLogger("server.io");
  LOGLogger* const m_requestLog = LOGManager::getLogger("server.request");
  LOGLogger* const m_db = LOGManager::getLogger("server.db");
};

void serve(int requests) {
  LOGLogger* const logger = LOGManager::getLogger("server");
  LOG4ZEB_INFO(logger, "starts with " << WORKERS << " workers");
  Queue queue(requests);
  std::vector<std::thread> threads;
  for (int i = 0; i < WORKERS; ++i) {
    threads.emplace_back([&queue] { Worker(queue).run(); });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  LOG4ZEB_INFO(logger, "ends after " << requests << " requests");
}

}  // namespace

int main(int argumentCount, char** arguments) {
  const int requests = argumentCount == 3 ? std::atoi(arguments[2]) : 0;
  if (requests < 1) {
    std::cerr << "usage: server DOCUMENT REQUESTS, where REQUESTS is 1 or more\n";
    return 2;
  }
  if (LOG4ZEBConfigurator::initialize(arguments[1]) == 0) {
    std::cerr << "server: cannot apply the configuration document " << arguments[1] << '\n';
    return 1;
  }
  serve(requests);
  LOG4ZEBConfigurator::shutdown();
  return 0;
}
