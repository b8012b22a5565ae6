#include <CLI/CLI.hpp>
#include <iostream>
#include <optional>
#include <string_view>
#include <vector>

#include "net/LOGLocalUDPAppender.h"
#include "platform/ZEBDatagramSocket.h"
#include "platform/ZEBSocketAddress.h"
#include "tools/CommandSupport.h"
#include "tools/DatagramLine.h"
#include "tools/StopSignal.h"
#include "tools/Subcommand.h"

namespace {

constexpr int MAXIMUM_PORT = 65535;
constexpr std::size_t LARGEST_DATAGRAM = 65536;
// What may wait while a line is printed; the system grants as much of it as it allows.
constexpr int RECEIVE_BUFFER = 8 * 1024 * 1024;
// A signal normally ends the wait at once; this bounds it when one comes just before.
constexpr int WAIT_MILLISECONDS = 200;

constexpr const char* NOTES =
    R"(A line for each datagram goes to standard output as soon as it is there; what the command
listens to is said on standard error when it is ready. With port 0 the system chooses a port.
A line end that closes a message is not printed, and control characters in it are escaped.

Exit codes:
  0        interrupted, or as many datagrams as wanted were printed
  1        unexpected failure, such as no memory
  2        bad arguments
  3        a port cannot be listened to
  5        standard output cannot be written)";

using LineMaker = std::string (*)(std::string_view, const std::string&, DatagramLine::Form);

/// Receives one datagram, if there is one, and prints its line. Returns whether there was one.
bool printOne(ZEBDatagramSocket& socket, std::vector<char>& buffer, LineMaker lineOf,
              DatagramLine::Form form) {
  ZEBSocketAddress sender("sender");
  const auto size = socket.receive(buffer.data(), buffer.size(), sender);
  if (size == -1) {
    return false;
  }
  const std::string_view bytes(buffer.data(), static_cast<std::size_t>(size));
  std::cout << lineOf(bytes, sender.toString().toStdString(), form) + "\n" << std::flush;
  return true;
}

class ListenCommand : public Subcommand {
 public:
  explicit ListenCommand(CLI::App& app) : m_recordPort(LOGLocalUDPAppender::DEFAULT_PORT) {
    CLI::App* const command =
        app.add_subcommand("listen", "Receive event records and syslog datagrams and print them");
    const CLI::Range ports(0, MAXIMUM_PORT);
    command
        ->add_option("--records", m_recordPort, "The port of the event records; without it, 9362")
        ->check(ports)
        ->type_name("PORT");
    command->add_option("--syslog", m_syslogPort, "The port of syslog datagrams; without it, none")
        ->check(ports)
        ->type_name("PORT");
    command
        ->add_option(
            "--address", m_address,
            "The local address to listen at; without it, 127.0.0.1, which only this machine "
            "reaches")
        ->type_name("ADDRESS");
    command->add_option("--count", m_count, "End after that many datagrams")
        ->check(CLI::PositiveNumber)
        ->type_name("N");
    command->add_flag("--json", m_json, "Print each datagram as a JSON object");
    command->footer(NOTES);
  }

  int run() const override {
    StopSignal::watch();
    ZEBDatagramSocket records;
    ZEBDatagramSocket syslog;
    if (!open(records, m_recordPort, "event records") ||
        (m_syslogPort && !open(syslog, *m_syslogPort, "syslog datagrams"))) {
      return CANNOT_LISTEN;
    }
    return printDatagrams(records, m_syslogPort ? &syslog : nullptr);
  }

 private:
  bool open(ZEBDatagramSocket& socket, int port, const char* what) const {
    const std::string task = std::string("listen for ") + what + " on ";
    ZEBSocketAddress address("listener");
    if (m_address.empty() || address.DOV_ResolveAddress(m_address, port) == 0) {
      CommandSupport::say("cannot " + task + "'" + m_address + "': there is no such address");
      return false;
    }
    const std::string place = address.toString().toStdString();
    if (socket.open(address) == 0 || socket.bind(address) == 0 || socket.setNonBlocking() == 0) {
      CommandSupport::say("cannot " + task + place + CommandSupport::reason(socket.getLastError()));
      return false;
    }
    socket.setBufferSizes(RECEIVE_BUFFER);
    address.DOV_ResolveAddress(m_address, socket.getLocalPort());
    CommandSupport::say("listening for " + std::string(what) + " on " +
                        address.toString().toStdString());
    return true;
  }

  int printDatagrams(ZEBDatagramSocket& records, ZEBDatagramSocket* syslog) const {
    const auto form = m_json ? DatagramLine::Form::Json : DatagramLine::Form::Text;
    std::vector<char> buffer(LARGEST_DATAGRAM);
    long printed = 0;
    const auto isDone = [&] { return (m_count && printed >= *m_count) || !std::cout; };
    while (!isDone() && StopSignal::received() == 0) {
      ZEBDatagramSocket::waitForEither(&records, syslog, WAIT_MILLISECONDS);
      if (printOne(records, buffer, &DatagramLine::ofRecord, form)) {
        ++printed;
      }
      if (syslog != nullptr && !isDone() &&
          printOne(*syslog, buffer, &DatagramLine::ofSyslog, form)) {
        ++printed;
      }
    }
    if (!std::cout) {
      CommandSupport::say("cannot write to standard output");
      return BAD_OUTPUT;
    }
    return 0;
  }

  int m_recordPort;
  std::optional<int> m_syslogPort;
  std::string m_address = "127.0.0.1";
  std::optional<long> m_count;
  bool m_json = false;
};

}  // namespace

std::unique_ptr<Subcommand> Subcommand::listen(CLI::App& app) {
  return std::make_unique<ListenCommand>(app);
}
