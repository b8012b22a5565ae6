#include "support/ChildProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <stdexcept>
#include <system_error>

#include "support/Workplace.h"

namespace {

void require(bool succeeded, int error, const char* what) {
  if (!succeeded) {
    throw std::system_error(error, std::generic_category(), what);
  }
}

struct Pipe {
  Pipe() { require(pipe2(ends, O_CLOEXEC) == 0, errno, "pipe"); }
  int reading() const { return ends[0]; }
  int writing() const { return ends[1]; }
  int ends[2] = {-1, -1};
};

std::string nextErrorFile() {
  static std::atomic<int> number{0};
  return "standard-error-" + std::to_string(++number);
}

void closeIfOpen(int& descriptor) {
  if (descriptor != -1) {
    close(descriptor);
    descriptor = -1;
  }
}

}  // namespace

ChildProcess::ChildProcess(const std::string& program, const std::vector<std::string>& arguments,
                           const std::string& input)
    : m_errorFile(nextErrorFile()) {
  const Pipe in;
  const Pipe out;
  posix_spawn_file_actions_t files;
  posix_spawn_file_actions_init(&files);
  if (input.empty()) {
    posix_spawn_file_actions_adddup2(&files, in.reading(), STDIN_FILENO);
  } else {
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, input.c_str(), O_RDONLY, 0);
  }
  posix_spawn_file_actions_adddup2(&files, out.writing(), STDOUT_FILENO);
  posix_spawn_file_actions_addopen(&files, STDERR_FILENO, m_errorFile.c_str(),
                                   O_WRONLY | O_CREAT | O_TRUNC, 0600);
  std::vector<char*> words{const_cast<char*>(program.c_str())};
  for (const std::string& argument : arguments) {
    words.push_back(const_cast<char*>(argument.c_str()));
  }
  words.push_back(nullptr);
  const int failed =
      posix_spawn(&m_process, program.c_str(), &files, nullptr, words.data(), environ);
  posix_spawn_file_actions_destroy(&files);
  close(in.reading());
  close(out.writing());
  m_input = in.writing();
  m_output = out.reading();
  require(failed == 0, failed, program.c_str());
}

ChildProcess::~ChildProcess() {
  if (m_process != -1) {
    kill(m_process, SIGKILL);
    wait();
  }
  closeIfOpen(m_input);
  closeIfOpen(m_output);
}

void ChildProcess::send(const std::string& text) {
  const ssize_t sent = write(m_input, text.data(), text.size());
  require(sent == static_cast<ssize_t>(text.size()), errno, "write to the process");
}

void ChildProcess::endInput() { closeIfOpen(m_input); }

const std::string& ChildProcess::receive(std::size_t bytes) {
  char buffer[4096];
  while (m_received.size() < bytes) {
    const ssize_t got = read(m_output, buffer, sizeof buffer);
    if (got <= 0) {
      break;
    }
    m_received.append(buffer, static_cast<std::size_t>(got));
  }
  return m_received;
}

void ChildProcess::signal(int number) { kill(m_process, number); }

ChildProcess::End ChildProcess::wait() {
  endInput();
  receive();
  int status = 0;
  require(waitpid(m_process, &status, 0) == m_process, errno, "waitpid");
  m_process = -1;
  return WIFSIGNALED(status) ? End{-1, WTERMSIG(status)} : End{WEXITSTATUS(status), 0};
}

std::string ChildProcess::errors() const { return Workplace::read(m_errorFile); }
