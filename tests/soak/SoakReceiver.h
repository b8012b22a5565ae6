#ifndef SOAK_SOAKRECEIVER_H
#define SOAK_SOAKRECEIVER_H

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "support/DatagramReceiver.h"

/// A daemon that receives datagrams on a thread of its own, and can be stopped and started again.
class SoakReceiver {
 public:
  /// Port 0 is any free one, and stays the same when the daemon is started again.
  SoakReceiver(std::string host, int port) : m_host(std::move(host)), m_port(port) {
    start();
    m_port = m_receiver == nullptr ? 0 : m_receiver->port();
    m_thread = std::thread([this] { run(); });
  }
  SoakReceiver(const SoakReceiver&) = delete;
  SoakReceiver& operator=(const SoakReceiver&) = delete;
  ~SoakReceiver() { finish(); }

  /// Stops the daemon when it listens, otherwise starts it. Returns whether it listens now.
  bool toggle() { return m_listens = !m_listens; }
  /// 0 when the port was not to be had.
  int port() const { return m_port; }
  /// Takes in what is still there and ends the thread; returns all that came.
  const std::vector<std::string>& finish() {
    m_ends = true;
    if (m_thread.joinable()) {
      m_thread.join();
    }
    return m_datagrams;
  }

 private:
  void start() {
    try {
      m_receiver = std::make_unique<DatagramReceiver>(m_host, m_port);
    } catch (const std::system_error&) {
      m_receiver = nullptr;  // somebody else has the port
    }
  }
  bool receive() {
    const auto datagram = m_receiver->next(20);
    if (datagram) {
      m_datagrams.push_back(*datagram);
    }
    return datagram.has_value();
  }
  void run() {
    while (!m_ends && m_port != 0) {
      if (!m_listens || m_receiver == nullptr) {
        m_receiver = nullptr;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        if (m_listens) {
          start();
        }
      } else {
        receive();
      }
    }
    while (m_receiver != nullptr && receive()) {
    }
    m_receiver = nullptr;
  }

  const std::string m_host;
  std::atomic<int> m_port;
  std::atomic<bool> m_listens{true};
  std::atomic<bool> m_ends{false};
  std::unique_ptr<DatagramReceiver> m_receiver;  // the thread's, as are the datagrams
  std::vector<std::string> m_datagrams;
  std::thread m_thread;
};

#endif
