#include "platform/factories.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <utility>

#include "foundation/command_line.h"
#include "platform/windows/com.h"
#include "platform/windows/handles.h"
#include "platform/windows/wide.h"
#include "platform/windows/windows_headers.h"
#include "ports/processes.h"
// The shell's header needs the system's before it.
#include <shellapi.h>

namespace platform {
namespace {

// ERROR_ELEVATION_REQUIRED; the cross compiler's headers lack it.
constexpr ports::SystemCode kElevationRequired = 740;

#ifndef _WIN64
static_assert(sizeof(STARTUPINFOW) == 68, "the start-up record");
static_assert(sizeof(SHELLEXECUTEINFOW) == 60, "the shell's execution record");
#endif
static_assert(STARTF_FORCEONFEEDBACK == 0x40 && STARTF_FORCEOFFFEEDBACK == 0x80);
static_assert(STARTF_USESHOWWINDOW == 0x1 && CREATE_DEFAULT_ERROR_MODE == 0x4000000);
static_assert(SEE_MASK_NOCLOSEPROCESS == 0x40 && SW_SHOWMAXIMIZED == 3);
static_assert(WAIT_TIMEOUT == 258);

class WindowsProcess final : public ports::Process {
 public:
  // The shell may have started something without a process of its own: handle none, id 0.
  // The job, which may be none, holds the process and all that it starts.
  WindowsProcess(UniqueKernelHandle handle, DWORD id, UniqueKernelHandle job = {})
      : handle_(std::move(handle)), id_(id), job_(std::move(job)) {}

  std::int32_t Id() const override { return static_cast<std::int32_t>(id_); }

  ports::Outcome<bool> Wait(std::int32_t milliseconds) override {
    using Result = ports::Outcome<bool>;
    if (!handle_) return Result::Success(true);
    const DWORD result = WaitForSingleObject(handle_.Get(), static_cast<DWORD>(milliseconds));
    if (result == WAIT_FAILED) return Result::Failure(LastError());
    return Result::Success(result != WAIT_TIMEOUT);
  }

  ports::Status Kill() override {
    const bool is_killed = job_ ? TerminateJobObject(job_.Get(), 1) != FALSE
                                : TerminateProcess(handle_.Get(), 1) != FALSE;
    const ports::SystemCode code = is_killed ? 0 : LastError();
    // A process that has ended cannot be ended again.
    if (is_killed || Wait(0).value) return ports::Status::Success();
    return ports::Status::Failure(code);
  }

  ports::Outcome<std::int32_t> ExitCode() override {
    using Result = ports::Outcome<std::int32_t>;
    DWORD exit_code = 0;
    if (GetExitCodeProcess(handle_.Get(), &exit_code) == FALSE) return Result::Failure(LastError());
    return Result::Success(static_cast<std::int32_t>(exit_code));
  }

 private:
  UniqueKernelHandle handle_;
  DWORD id_;
  UniqueKernelHandle job_;
};

// An empty text is passed as none.
const wchar_t* OrNone(const std::wstring& text) {
  return text.empty() ? nullptr : text.c_str();
}

STARTUPINFOW StartUpRecord(const ports::StartRequest& request) {
  STARTUPINFOW record{};
  record.cb = sizeof(record);
  if (request.feedback_on) record.dwFlags |= STARTF_FORCEONFEEDBACK;
  if (request.feedback_off) record.dwFlags |= STARTF_FORCEOFFFEEDBACK;
  if (request.show_window) {
    record.dwFlags |= STARTF_USESHOWWINDOW;
    record.wShowWindow = *request.show_window;
  }
  return record;
}

UniqueFileHandle OpenInherited(const std::wstring& path, DWORD access, DWORD how) {
  SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  return UniqueFileHandle(CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                      &inherited, how, FILE_ATTRIBUTE_NORMAL, nullptr));
}

// Other devices than a console have no mode.
bool IsConsole(DWORD stream) {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(stream), &mode) != FALSE;
}

class WindowsProcesses final : public ports::Processes {
 public:
  ports::Outcome<std::unique_ptr<ports::Process>> Start(
      const ports::StartRequest& request) override {
    using Result = ports::Outcome<std::unique_ptr<ports::Process>>;
    if (request.program.empty() && request.command_line.empty())
      return Result::Failure(ERROR_INVALID_PARAMETER);  // not every system survives the call
    STARTUPINFOW record = StartUpRecord(request);
    PROCESS_INFORMATION started{};
    // A program that another thread starts meanwhile would inherit the files too, and hold them.
    std::unique_lock lock(guard_, std::defer_lock);
    UniqueFileHandle input;
    UniqueFileHandle output;
    UniqueKernelHandle job;
    DWORD flags = CREATE_DEFAULT_ERROR_MODE;
    if (!request.output_file.empty()) {
      lock.lock();
      input = OpenInherited(L"NUL", GENERIC_READ, OPEN_EXISTING);
      output = OpenInherited(ToWide(request.output_file), GENERIC_WRITE, CREATE_ALWAYS);
      if (!input || !output) return Result::Failure(LastError());
      record.dwFlags |= STARTF_USESTDHANDLES;
      record.hStdInput = input.Get();
      record.hStdOutput = output.Get();
      record.hStdError = output.Get();
      job.Reset(CreateJobObjectW(nullptr, nullptr));
      flags |= CREATE_SUSPENDED;
    }
    const std::wstring program = ToWide(request.program);
    std::wstring command_line = ToWide(request.command_line);
    const std::wstring folder = ToWide(request.working_folder);
    if (CreateProcessW(OrNone(program), command_line.empty() ? nullptr : command_line.data(),
                       nullptr, nullptr, output ? TRUE : FALSE, flags, nullptr, OrNone(folder),
                       &record, &started) == FALSE)
      return Result::Failure(LastError());
    const UniqueKernelHandle thread(started.hThread);
    // Refused on Windows 7 where this process is in a job itself.
    if (job && AssignProcessToJobObject(job.Get(), started.hProcess) == FALSE) job.Reset();
    if ((flags & CREATE_SUSPENDED) != 0) ResumeThread(started.hThread);
    return Result::Success(std::make_unique<WindowsProcess>(UniqueKernelHandle(started.hProcess),
                                                            started.dwProcessId, std::move(job)));
  }

  ports::Outcome<std::unique_ptr<ports::Process>> StartElevated(
      const ports::ElevatedStartRequest& request) override {
    using Result = ports::Outcome<std::unique_ptr<ports::Process>>;
    const std::wstring program = ToWide(request.program);
    const std::wstring parameters = ToWide(request.parameters);
    const std::wstring folder = ToWide(request.working_folder);
    const ComScope scope;  // the shell may load components to start the program
    SHELLEXECUTEINFOW record{};
    record.cbSize = sizeof(record);
    record.fMask = SEE_MASK_NOCLOSEPROCESS;
    // Without a window of ours the system asks for consent in the background.
    record.hwnd = GetActiveWindow();
    record.lpVerb = L"runas";
    record.lpFile = program.c_str();
    record.lpParameters = parameters.c_str();
    record.lpDirectory = folder.empty() ? nullptr : folder.c_str();
    record.nShow = SW_SHOWMAXIMIZED;
    if (ShellExecuteExW(&record) == FALSE) return Result::Failure(LastError());
    UniqueKernelHandle handle(record.hProcess);
    const DWORD id = GetProcessId(handle.Get());
    return Result::Success(std::make_unique<WindowsProcess>(std::move(handle), id));
  }

  bool CanGainRights() const override {
    HANDLE token = nullptr;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token) == FALSE) return false;
    const UniqueKernelHandle owner(token);
    TOKEN_ELEVATION elevation{};
    DWORD length = 0;
    return GetTokenInformation(token, TokenElevation, &elevation, sizeof(elevation), &length) !=
               FALSE &&
           elevation.TokenIsElevated == 0;
  }

  bool NeedsElevation(ports::SystemCode code,
                      const ports::StartRequest& /*request*/) const override {
    return code == kElevationRequired;
  }

  // Behind the program's name, which ends at a blank outside quotes.
  std::string OwnArguments() const override {
    const std::wstring line = GetCommandLineW();
    bool is_inside_quotes = false;
    const auto name_end = std::find_if(line.begin(), line.end(), [&](wchar_t c) {
      if (c == L'"') is_inside_quotes = !is_inside_quotes;
      return (c == L' ' || c == L'\t') && !is_inside_quotes;
    });
    const auto start =
        std::find_if(name_end, line.end(), [](wchar_t c) { return c != L' ' && c != L'\t'; });
    return FromWide(std::wstring(start, line.end()));
  }

  std::vector<std::string> OwnArgumentList() const override {
    return tmw::SplitCommandLine(OwnArguments());
  }

  std::string OwnProgram() const override {
    static constexpr std::size_t kLongestPath = 32768;
    std::wstring path(kLongestPath, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return FromWide(path);
  }

  std::string ProgramEnding() const override { return ".exe"; }

  bool HasTerminal() const override { return IsConsole(STD_ERROR_HANDLE); }
  bool PrintsToTerminal() const override { return IsConsole(STD_OUTPUT_HANDLE); }

  ports::Status Terminate(std::int32_t exit_code) override {
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(exit_code));
    return ports::Status::Failure(LastError());
  }

 private:
  std::mutex guard_;  // while handles may be inherited
};

}  // namespace

std::unique_ptr<ports::Processes> MakeProcesses(int /*argc*/, char** /*argv*/) {
  return std::make_unique<WindowsProcesses>();
}

std::optional<int> PrepareUpdater(int /*argc*/, char** /*argv*/) {
  return std::nullopt;
}

std::optional<int> WaitForUpdaterChain() {
  return std::nullopt;
}

}  // namespace platform
