#ifndef TOOLS_LISTENCOMMAND_H
#define TOOLS_LISTENCOMMAND_H

#include <optional>
#include <string>

class ZEBDatagramSocket;

namespace CLI {
class App;
}

/// The command `log4zeb listen`: receives the datagrams of the local UDP appender and of the syslog
/// appender and prints a line for each.
class ListenCommand {
 public:
  // What the command exits with, next to 0.
  static constexpr int CANNOT_LISTEN = 3;
  static constexpr int BAD_OUTPUT = 5;

  /// Declares the subcommand and its options; `app` must not outlive this object.
  explicit ListenCommand(CLI::App& app);
  ListenCommand(const ListenCommand&) = delete;
  ListenCommand& operator=(const ListenCommand&) = delete;

  /// Does what the parsed options say, until it is interrupted, and returns the exit code.
  int run() const;

 private:
  bool open(ZEBDatagramSocket& socket, int port, const char* what) const;
  int printDatagrams(ZEBDatagramSocket& records, ZEBDatagramSocket* syslog) const;

  int m_recordPort;
  std::optional<int> m_syslogPort;
  std::string m_address = "127.0.0.1";
  std::optional<long> m_count;
  bool m_json = false;
};

#endif
