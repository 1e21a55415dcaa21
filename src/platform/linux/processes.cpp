#include "platform/factories.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/command_line.h"
#include "foundation/text.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/exit_codes.h"
#include "platform/linux/own_folder.h"
#include "platform/linux/updater_chain.h"
#include "ports/processes.h"

extern char** environ;  // NOLINT(readability-redundant-declaration)

namespace platform {
namespace {

constexpr int kFirstOwnDescriptor = 3;
constexpr int kPollWithoutPidfdMilliseconds = 10;
constexpr const char* kElevator = "pkexec";
// Exit codes of pkexec if the user declines, and if they are not authorised or no agent could ask.
constexpr int kElevationDeclined = 126;
constexpr int kElevationRefused = 127;

// How posix_spawn sets up the child: folder, signals, descriptors, environment.
class SpawnPlan {
 public:
  SpawnPlan() {
    posix_spawn_file_actions_init(&actions_);
    posix_spawnattr_init(&attributes_);
  }
  SpawnPlan(const SpawnPlan&) = delete;
  SpawnPlan& operator=(const SpawnPlan&) = delete;
  ~SpawnPlan() {
    posix_spawn_file_actions_destroy(&actions_);
    posix_spawnattr_destroy(&attributes_);
  }

  void SetFolder(const std::string& folder) {
    if (!folder.empty()) posix_spawn_file_actions_addchdir_np(&actions_, folder.c_str());
  }

  // Signals that this program ignores for itself; its children start with the usual handling.
  void ResetSignals(const sigset_t& signals) {
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigdefault(&attributes_, &signals);
    posix_spawnattr_setsigmask(&attributes_, &none);
    flags_ |= POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK;
  }

  // Nothing to read, the file to write to, and a group of processes of its own.
  void Detach(const std::string& output_file) {
    constexpr mode_t kMode = 0666;
    posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, output_file.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, kMode);
    posix_spawn_file_actions_adddup2(&actions_, STDOUT_FILENO, STDERR_FILENO);
    posix_spawnattr_setpgroup(&attributes_, 0);
    flags_ |= POSIX_SPAWN_SETPGROUP;
  }

  // The child inherits this one descriptor, as kFirstOwnDescriptor.
  void PassDescriptor(int descriptor) {
    posix_spawn_file_actions_adddup2(&actions_, descriptor, kFirstOwnDescriptor);
    first_closed_ = kFirstOwnDescriptor + 1;
  }

  void AddVariable(std::string variable) { variables_.push_back(std::move(variable)); }

  // With search: a program without "/" is looked for in PATH. A failure has the system's code for
  // the folder or the program.
  ports::Outcome<pid_t> Spawn(const std::string& program, const std::vector<std::string>& arguments,
                              bool search) {
    posix_spawn_file_actions_addclosefrom_np(&actions_, first_closed_);
    posix_spawnattr_setflags(&attributes_, static_cast<short>(flags_));
    char** end = environ;
    while (*end != nullptr)
      ++end;
    std::vector<char*> environment(environ, end);
    for (std::string& variable : variables_)
      environment.push_back(variable.data());
    environment.push_back(nullptr);
    std::vector<char*> argv;
    argv.reserve(arguments.size() + 1);
    for (const std::string& argument : arguments)
      argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    pid_t child = 0;
    const auto spawn = search ? posix_spawnp : posix_spawn;
    const int code =
        spawn(&child, program.c_str(), &actions_, &attributes_, argv.data(), environment.data());
    return code == 0 ? ports::Outcome<pid_t>::Success(child) : ports::Outcome<pid_t>::Failure(code);
  }

 private:
  posix_spawn_file_actions_t actions_{};
  posix_spawnattr_t attributes_{};
  int first_closed_ = kFirstOwnDescriptor;
  int flags_ = 0;
  std::vector<std::string> variables_;
};

// By number: not every version of the C library declares pidfd_open so that C++ can use it.
int OpenProcess(pid_t id) {
  return static_cast<int>(syscall(SYS_pidfd_open, id, 0));
}

class LinuxProcess final : public ports::Process {
 public:
  explicit LinuxProcess(pid_t id) : id_(id), handle_(OpenProcess(id)) {}
  LinuxProcess(const LinuxProcess&) = delete;
  LinuxProcess& operator=(const LinuxProcess&) = delete;
  // Reaps a process that has ended meanwhile, so that no zombie stays.
  ~LinuxProcess() override {
    if (!is_reaped_ && !is_chain_member_) waitpid(id_, nullptr, WNOHANG);
  }

  // It leads a group of processes that Kill ends with it.
  void LeadGroup() { leads_group_ = true; }

  // The parent of the chain wants its exit code and inherits it when this process ends.
  void LeaveToChainParent() { is_chain_member_ = true; }

  std::int32_t Id() const override { return id_; }

  ports::Outcome<bool> Wait(std::int32_t milliseconds) override {
    if (!handle_) return WaitWithoutHandle(milliseconds);
    pollfd ended{handle_.Get(), POLLIN, 0};
    const int count = poll(&ended, 1, milliseconds);
    if (count < 0 && errno != EINTR) return ports::Outcome<bool>::Failure(errno);
    return ports::Outcome<bool>::Success(count > 0);
  }

  ports::Status Kill() override {
    if (is_reaped_) return ports::Status::Success();
    const bool is_killed = kill(leads_group_ ? -id_ : id_, SIGKILL) == 0 || errno == ESRCH;
    return is_killed ? ports::Status::Success() : ports::Status::Failure(errno);
  }

  ports::Outcome<std::int32_t> ExitCode() override {
    using Result = ports::Outcome<std::int32_t>;
    if (is_reaped_) return Result::Success(exit_code_);
    int status = 0;
    const pid_t reaped = waitpid(id_, &status, WNOHANG);
    if (reaped < 0) return Result::Failure(errno);
    if (reaped == 0) return Result::Failure(EBUSY);
    is_reaped_ = true;
    exit_code_ = ExitCodeOf(status);
    return Result::Success(exit_code_);
  }

 private:
  // For kernels before 5.3 and for sandboxes that forbid the call.
  ports::Outcome<bool> WaitWithoutHandle(std::int32_t milliseconds) const {
    for (std::int32_t waited = 0;; waited += kPollWithoutPidfdMilliseconds) {
      siginfo_t facts{};
      if (waitid(P_PID, static_cast<id_t>(id_), &facts, WEXITED | WNOHANG | WNOWAIT) != 0)
        return ports::Outcome<bool>::Failure(errno);
      if (facts.si_pid != 0) return ports::Outcome<bool>::Success(true);
      if (waited >= milliseconds) return ports::Outcome<bool>::Success(false);
      poll(nullptr, 0, kPollWithoutPidfdMilliseconds);
    }
  }

  pid_t id_;
  UniqueDescriptor handle_;
  bool is_reaped_ = false;
  bool is_chain_member_ = false;
  bool leads_group_ = false;
  std::int32_t exit_code_ = 0;
};

// A relative path refers to the caller's folder, not to the program's working folder.
std::string AbsoluteProgram(const std::string& program) {
  std::error_code ignored;
  const std::filesystem::path absolute = std::filesystem::absolute(program, ignored);
  return ignored ? program : absolute.string();
}

// Without the quotes of a command line; pkexec searches for a bare name that is no file here.
std::string ElevatedProgram(std::string program) {
  if (program.size() >= 2 && program.front() == '"' && program.back() == '"')
    program = program.substr(1, program.size() - 2);
  std::error_code ignored;
  const bool is_path = program.find('/') != std::string::npos;
  return is_path || std::filesystem::exists(program, ignored) ? AbsoluteProgram(program) : program;
}

// Whether the file may be executed by somebody, but not by this user.
bool IsProgramOfOthers(const std::string& path) {
  struct stat facts {};
  if (stat(path.c_str(), &facts) != 0 || !S_ISREG(facts.st_mode)) return false;
  const bool is_program = (facts.st_mode & (S_IXUSR | S_IXGRP | S_IXOTH)) != 0;
  // Where no program may run at all, elevation does not help.
  return is_program && LetsProgramsRun(path) &&
         faccessat(AT_FDCWD, path.c_str(), X_OK, AT_EACCESS) != 0;
}

// Once pkexec has executed the program, the process has the program's name.
bool IsStillElevator(pid_t id) {
  std::ifstream file("/proc/" + std::to_string(id) + "/comm");
  std::string name;
  std::getline(file, name);
  return name == kElevator;
}

class LinuxProcesses final : public ports::Processes {
 public:
  LinuxProcesses(int argc, char** argv)
      : own_arguments_(argv + std::min(argc, 1), argv + argc), own_program_(ReadOwnProgram()) {
    sigemptyset(&resettable_signals_);
    // While SIGCHLD is ignored children leave no exit codes.
    if (IsIgnored(SIGCHLD)) static_cast<void>(std::signal(SIGCHLD, SIG_DFL));
    for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE}) {
      // What the caller ignored (nohup) stays ignored.
      if (!IsIgnored(number)) sigaddset(&resettable_signals_, number);
    }
    ChainPipe();  // removes the chain's variable from the environment of other programs
  }

  ports::Outcome<std::unique_ptr<ports::Process>> Start(
      const ports::StartRequest& request) override {
    using Result = ports::Outcome<std::unique_ptr<ports::Process>>;
    std::vector<std::string> arguments =
        tmw::SplitCommandLine(request.command_line, tmw::EmptyArguments::kKept);
    const bool is_given = !request.program.empty();
    if (!is_given && arguments.empty()) return Result::Failure(ENOENT);
    std::string program = is_given ? request.program : arguments.front();
    if (arguments.empty()) arguments.push_back(program);
    if (is_given || program.find('/') != std::string::npos) program = AbsoluteProgram(program);

    SpawnPlan plan;
    plan.ResetSignals(resettable_signals_);
    plan.SetFolder(request.working_folder);
    if (!request.output_file.empty()) plan.Detach(request.output_file);
    const bool continues_chain = request.continues_chain && ChainPipe() >= 0;
    if (continues_chain) PassChain(plan);
    const auto child = plan.Spawn(program, arguments, true);
    if (!child) return Result::Failure(child.code);
    auto process = std::make_unique<LinuxProcess>(child.value);
    if (!request.output_file.empty()) process->LeadGroup();
    if (continues_chain) {
      AnnounceChainMember(child.value);
      process->LeaveToChainParent();
    }
    return Result::Success(std::move(process));
  }

  ports::Outcome<std::unique_ptr<ports::Process>> StartElevated(
      const ports::ElevatedStartRequest& request) override {
    using Result = ports::Outcome<std::unique_ptr<ports::Process>>;
    std::vector<std::string> arguments = {kElevator};
    if (!request.working_folder.empty()) arguments.emplace_back("--keep-cwd");
    arguments.push_back(ElevatedProgram(request.program));
    for (std::string& parameter :
         tmw::SplitCommandLine(request.parameters, tmw::EmptyArguments::kKept))
      arguments.push_back(std::move(parameter));

    // pkexec closes every descriptor when it ends or executes the program.
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) return Result::Failure(errno);
    const UniqueDescriptor read_end(ends[0]);
    UniqueDescriptor write_end(ends[1]);
    SpawnPlan plan;
    plan.ResetSignals(resettable_signals_);
    plan.SetFolder(request.working_folder);
    plan.PassDescriptor(write_end.Get());
    const auto child = plan.Spawn(kElevator, arguments, true);
    if (!child) return Result::Failure(child.code);
    write_end.Reset();
    auto process = std::make_unique<LinuxProcess>(child.value);
    const ports::Status decision = AwaitDecision(*process, read_end.Get());
    if (!decision) return Result::Failure(decision.code);
    if (request.continues_chain) {
      AnnounceChainMember(child.value);
      process->LeaveToChainParent();
    }
    return Result::Success(std::move(process));
  }

  bool CanGainRights() const override {
    if (geteuid() == 0 || !HasTerminal() || isatty(STDIN_FILENO) == 0) return false;
    const char* const folders = std::getenv("PATH");
    if (folders == nullptr) return false;
    const std::vector<std::string> list = tmw::Split(folders, ":");
    return std::any_of(list.begin(), list.end(), [](const std::string& folder) {
      return access((folder + "/" + kElevator).c_str(), X_OK) == 0;
    });
  }

  bool NeedsElevation(ports::SystemCode code, const ports::StartRequest& request) const override {
    if ((code != EACCES && code != EPERM) || geteuid() == 0) return false;
    const auto words = tmw::SplitCommandLine(request.command_line);
    if (request.program.empty() && words.empty()) return false;
    return IsProgramOfOthers(request.program.empty() ? words.front() : request.program);
  }

  std::string OwnArguments() const override { return tmw::JoinCommandLine(own_arguments_); }
  std::vector<std::string> OwnArgumentList() const override { return own_arguments_; }
  std::string OwnProgram() const override { return own_program_; }

  std::string ProgramEnding() const override { return ""; }

  bool HasTerminal() const override { return isatty(STDERR_FILENO) != 0; }
  bool PrintsToTerminal() const override { return isatty(STDOUT_FILENO) != 0; }

  ports::Status Terminate(std::int32_t exit_code) override { _exit(exit_code); }

 private:
  static bool IsIgnored(int number) {
    struct sigaction action {};
    return sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
  }

  // Read at the start: an update may replace the file.
  static std::string ReadOwnProgram() {
    std::error_code ignored;
    return std::filesystem::read_symlink("/proc/self/exe", ignored).string();
  }

  static void PassChain(SpawnPlan& plan) {
    static_assert(kChainDescriptor == kFirstOwnDescriptor);
    plan.PassDescriptor(ChainPipe());
    plan.AddVariable(kChainVariable + ("=" + std::to_string(kChainDescriptor)));
  }

  // Waits until the user has answered pkexec.
  static ports::Status AwaitDecision(LinuxProcess& process, int pipe) {
    char nothing = 0;
    while (read(pipe, &nothing, 1) < 0 && errno == EINTR) {
    }
    while (IsStillElevator(process.Id())) {
      const auto ended = process.Wait(kPollWithoutPidfdMilliseconds);
      if (!ended) return ended.ToStatus();
      if (!ended.value) continue;
      const auto exit_code = process.ExitCode();
      if (!exit_code) return exit_code.ToStatus();
      if (exit_code.value == kElevationDeclined) return ports::Status::Failure(ECANCELED);
      return ports::Status::Failure(exit_code.value == kElevationRefused ? EACCES : EPERM);
    }
    return ports::Status::Success();
  }

  std::vector<std::string> own_arguments_;
  std::string own_program_;
  sigset_t resettable_signals_{};
};

}  // namespace

std::unique_ptr<ports::Processes> MakeProcesses(int argc, char** argv) {
  return std::make_unique<LinuxProcesses>(argc, argv);
}

}  // namespace platform
