#ifndef NET_LOGLOCALUDPAPPENDER_H
#define NET_LOGLOCALUDPAPPENDER_H

#include <atomic>
#include <chrono>
#include <memory>

#include "appenders/LOGAppenderSkeleton.h"
#include "platform/ZEBDatagramSocket.h"
#include "platform/ZEBSocketAddress.h"
#include "rendering/LOGRecordStream.h"

/// Sends each event as one UDP datagram to a listener on this machine: a record in the form of Java
/// object serialisation with the logger's name and the message object, written by the object's
/// renderer. A log call does not wait for the listener. Nothing is reported: what cannot be sent is
/// lost, and a socket that cannot be made is tried again at most once a second.
class LOG4ZEB_EXPORT LOGLocalUDPAppender : public LOGAppenderSkeleton {
 public:
  static constexpr int DEFAULT_PORT = 9362;

  LOGLocalUDPAppender();
  /// The copy has the port, but makes a socket of its own.
  LOGLocalUDPAppender(const LOGLocalUDPAppender& other);
  /// The same; the socket there was is closed. Takes this appender's lock.
  LOGLocalUDPAppender& operator=(const LOGLocalUDPAppender& other);
  /// Closes the socket.
  ~LOGLocalUDPAppender() override;

  /// Makes the socket, unless there is one or the appender is closed. Takes the appender's lock.
  void activateOptions() override;
  /// Refuses events from now on.
  /// Deliberate: the socket stays open until release() or the appender's end.
  void close() override;
  /// Frees the socket and the memory of an appender that was closed, for an owner that has to keep
  /// the object. Takes the appender's lock.
  void release();
  /// 0.
  int requiresLayout() override { return 0; }

  /// Takes effect when the socket is made.
  void setPort(int port) { m_port = port; }
  int getPort() const { return m_port; }

  /// 1 when ports and what all appenders have are equal, else 0.
  int operator==(const LOGLocalUDPAppender& other) const;
  int operator!=(const LOGLocalUDPAppender& other) const { return *this == other ? 0 : 1; }
  int operator==(const LOGObject& other) const override;
  int operator!=(const LOGObject& other) const override { return *this == other ? 0 : 1; }
  // Forms for each pair of types, without which C++20 compares with the operands exchanged.
  int operator==(const LOGAppenderSkeleton& other) const;
  int operator!=(const LOGAppenderSkeleton& other) const { return *this == other ? 0 : 1; }
  friend int operator==(const LOGAppenderSkeleton& a, const LOGLocalUDPAppender& b) {
    return a.operator==(b);
  }
  friend int operator!=(const LOGAppenderSkeleton& a, const LOGLocalUDPAppender& b) {
    return a.operator!=(b);
  }
  friend int operator==(const LOGObject& a, const LOGLocalUDPAppender& b) {
    return a.operator==(b);
  }
  friend int operator!=(const LOGObject& a, const LOGLocalUDPAppender& b) {
    return a.operator!=(b);
  }

  void append(LOGLoggingEvent* event) override;

 private:
  void init();
  bool makeSocket();
  std::unique_ptr<LOGRecordStream> copyOfRecord() const;

  std::atomic<int> m_port{DEFAULT_PORT};
  // All guarded by the appender's lock, but for the atomic.
  std::unique_ptr<LOGRecordStream> m_record;  // used again and again
  ZEBDatagramSocket m_socket;
  ZEBSocketAddress m_destination;
  std::atomic<int> m_activationPending{1};
  std::chrono::steady_clock::time_point m_nextAttempt{};
};

#endif
