#include "support/ChildProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

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

int descriptorOf(std::intptr_t number) { return static_cast<int>(number); }

void closeIfOpen(std::intptr_t& number) {
  if (number != -1) {
    close(descriptorOf(number));
    number = -1;
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
  pid_t process = -1;
  const int failed = posix_spawn(&process, program.c_str(), &files, nullptr, words.data(), environ);
  m_process = process;
  posix_spawn_file_actions_destroy(&files);
  close(in.reading());
  close(out.writing());
  m_input = in.writing();
  m_output = out.reading();
  require(failed == 0, failed, program.c_str());
}

ChildProcess::~ChildProcess() {
  if (m_process != NONE) {
    kill();
    wait();
  }
  closeIfOpen(m_input);
  closeIfOpen(m_output);
}

void ChildProcess::send(const std::string& text) {
  const ssize_t sent = write(descriptorOf(m_input), text.data(), text.size());
  require(sent == static_cast<ssize_t>(text.size()), errno, "write to the process");
}

void ChildProcess::endInput() { closeIfOpen(m_input); }

long ChildProcess::readOutput(char* buffer, std::size_t size) {
  return read(descriptorOf(m_output), buffer, size);
}

void ChildProcess::kill() { signal(SIGKILL); }

void ChildProcess::signal(int number) { ::kill(descriptorOf(m_process), number); }

ChildProcess::End ChildProcess::wait() {
  endInput();
  receive();
  int status = 0;
  require(waitpid(descriptorOf(m_process), &status, 0) == m_process, errno, "waitpid");
  m_process = NONE;
  return WIFSIGNALED(status) ? End{-1, WTERMSIG(status)} : End{WEXITSTATUS(status), 0};
}
