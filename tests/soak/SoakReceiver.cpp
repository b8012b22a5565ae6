#include "soak/SoakReceiver.h"

#include <chrono>
#include <system_error>

#include "support/DatagramReceiver.h"

SoakReceiver::SoakReceiver(std::string host, int port) : m_host(std::move(host)), m_port(port) {
  m_receiver = open();
  m_port = m_receiver == nullptr ? 0 : m_receiver->port();
  if (m_receiver != nullptr) {
    m_thread = std::thread([this] { run(); });
  }
}

SoakReceiver::~SoakReceiver() { finish(); }

std::unique_ptr<DatagramReceiver> SoakReceiver::open() const {
  try {
    return std::make_unique<DatagramReceiver>(m_host, m_port);
  } catch (const std::system_error&) {
    return nullptr;
  }
}

void SoakReceiver::run() {
  while (!m_ends) {
    if (!m_listens) {
      m_receiver = nullptr;
    } else if (m_receiver == nullptr) {
      m_receiver = open();
    }
    if (m_receiver == nullptr) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    } else if (const auto datagram = m_receiver->next(20)) {
      m_datagrams.push_back(*datagram);
    }
  }
  while (m_receiver != nullptr) {
    if (const auto datagram = m_receiver->next(20)) {
      m_datagrams.push_back(*datagram);
    } else {
      m_receiver = nullptr;
    }
  }
}

void SoakReceiver::finish() {
  m_ends = true;
  if (m_thread.joinable()) {
    m_thread.join();
  }
}
