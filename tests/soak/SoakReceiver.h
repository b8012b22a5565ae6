#ifndef SOAK_SOAKRECEIVER_H
#define SOAK_SOAKRECEIVER_H

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

class DatagramReceiver;

/// A daemon that receives datagrams on a thread of its own, and can be stopped and started again.
class SoakReceiver {
 public:
  /// Port 0 is any free one, and stays the same when the daemon is started again.
  SoakReceiver(std::string host, int port);
  SoakReceiver(const SoakReceiver&) = delete;
  SoakReceiver& operator=(const SoakReceiver&) = delete;
  ~SoakReceiver();

  void setListening(bool listening) { m_listens = listening; }
  /// 0 when the port is not to be had.
  int port() const { return m_port; }
  /// Takes in what is still there and ends the thread. What has come is in datagrams() then.
  void finish();
  const std::vector<std::string>& datagrams() const { return m_datagrams; }

 private:
  void run();
  std::unique_ptr<DatagramReceiver> open() const;

  const std::string m_host;
  std::atomic<int> m_port;
  std::atomic<bool> m_listens{true};
  std::atomic<bool> m_ends{false};
  std::unique_ptr<DatagramReceiver> m_receiver;  // the thread's, as are the datagrams
  std::vector<std::string> m_datagrams;
  std::thread m_thread;
};

#endif
