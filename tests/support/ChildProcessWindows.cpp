#include <windows.h>

#include <filesystem>
#include <system_error>

#include "support/ChildProcess.h"

namespace {

HANDLE handleOf(std::intptr_t number) { return reinterpret_cast<HANDLE>(number); }

std::intptr_t numberOf(HANDLE handle) { return reinterpret_cast<std::intptr_t>(handle); }

void require(bool succeeded, const char* what) {
  if (!succeeded) {
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), what);
  }
}

void closeIfOpen(std::intptr_t& number) {
  if (number != -1) {
    CloseHandle(handleOf(number));
    number = -1;
  }
}

std::wstring wide(const std::string& utf8) { return std::filesystem::u8path(utf8).wstring(); }

/// A word as programs of Windows take it out of their command line again.
std::wstring quoted(const std::wstring& word) {
  std::wstring text = L"\"";
  std::size_t backslashes = 0;
  for (const wchar_t c : word) {
    if (c == L'"') {
      text.append(backslashes + 1, L'\\');
    }
    backslashes = c == L'\\' ? backslashes + 1 : 0;
    text += c;
  }
  return text.append(backslashes, L'\\') + L"\"";
}

/// What a child process inherits, for as long as it takes to start it.
class Inherited {
 public:
  Inherited() = default;
  Inherited(const Inherited&) = delete;
  Inherited& operator=(const Inherited&) = delete;
  ~Inherited() { CloseHandle(handle); }

  void open(const std::string& name, DWORD access, DWORD disposition) {
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    handle = CreateFileW(wide(name).c_str(), access,
                         FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, &inheritable,
                         disposition, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    require(handle != INVALID_HANDLE_VALUE, name.c_str());
  }
  /// Makes a pipe and returns this process's end of it.
  std::intptr_t openPipe(bool childReads) {
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    HANDLE reading = nullptr;
    HANDLE writing = nullptr;
    require(CreatePipe(&reading, &writing, &inheritable, 0) != 0, "pipe");
    handle = childReads ? reading : writing;
    const HANDLE own = childReads ? writing : reading;
    require(SetHandleInformation(own, HANDLE_FLAG_INHERIT, 0) != 0, "pipe");
    return numberOf(own);
  }

  HANDLE handle = INVALID_HANDLE_VALUE;
};

}  // namespace

ChildProcess::ChildProcess(const std::string& program, const std::vector<std::string>& arguments,
                           const std::string& input)
    : m_errorFile(nextErrorFile()) {
  Inherited in;
  Inherited out;
  Inherited errors;
  if (input.empty()) {
    m_input = in.openPipe(true);
  } else {
    in.open(input, GENERIC_READ, OPEN_EXISTING);
  }
  m_output = out.openPipe(false);
  errors.open(m_errorFile, GENERIC_WRITE, CREATE_ALWAYS);
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdInput = in.handle;
  startup.hStdOutput = out.handle;
  startup.hStdError = errors.handle;
  std::wstring commandLine = quoted(wide(program));
  for (const std::string& argument : arguments) {
    commandLine += L" " + quoted(wide(argument));
  }
  PROCESS_INFORMATION started{};
  bool isStarted = false;
  // Wine now and then refuses a start for no reason.
  for (int attempt = 0; !isStarted && attempt < 5; ++attempt) {
    isStarted = CreateProcessW(wide(program).c_str(), std::wstring(commandLine).data(), nullptr,
                               nullptr, TRUE, 0, nullptr, nullptr, &startup, &started) != 0;
    if (!isStarted && GetLastError() != ERROR_INTERNAL_ERROR) {
      break;
    }
    if (!isStarted) {
      Sleep(100);
      SetLastError(ERROR_INTERNAL_ERROR);
    }
  }
  require(isStarted, program.c_str());
  CloseHandle(started.hThread);
  m_process = numberOf(started.hProcess);
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
  DWORD sent = 0;
  require(WriteFile(handleOf(m_input), text.data(), static_cast<DWORD>(text.size()), &sent,
                    nullptr) != 0 &&
              sent == text.size(),
          "write to the process");
}

void ChildProcess::endInput() { closeIfOpen(m_input); }

long ChildProcess::readOutput(char* buffer, std::size_t size) {
  DWORD got = 0;
  const BOOL succeeded =
      ReadFile(handleOf(m_output), buffer, static_cast<DWORD>(size), &got, nullptr);
  return succeeded != 0 ? static_cast<long>(got) : 0;
}

void ChildProcess::kill() { TerminateProcess(handleOf(m_process), static_cast<UINT>(-1)); }

ChildProcess::End ChildProcess::wait() {
  endInput();
  receive();
  DWORD exitCode = 0;
  require(WaitForSingleObject(handleOf(m_process), INFINITE) == WAIT_OBJECT_0 &&
              GetExitCodeProcess(handleOf(m_process), &exitCode) != 0,
          "wait for the process");
  closeIfOpen(m_process);
  return End{static_cast<int>(exitCode), 0};
}
