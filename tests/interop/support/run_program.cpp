#include "support/run_program.hpp"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>

extern char** environ;

namespace interop {
namespace {

std::string read_all(int descriptor) {
  std::string text;
  std::array<char, 4096> piece;
  for (;;) {
    const ssize_t bytes = ::read(descriptor, piece.data(), piece.size());
    if (bytes <= 0) return text;
    text.append(piece.data(), static_cast<std::size_t>(bytes));
  }
}

}  // namespace

Finished run_program(const std::vector<std::string>& arguments) {
  std::vector<char*> argv;
  for (const auto& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  std::array<int, 2> pipe;
  if (::pipe2(pipe.data(), O_CLOEXEC) != 0) return {-1, "no pipe"};
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_adddup2(&actions, pipe[1], STDOUT_FILENO);
  ::posix_spawn_file_actions_adddup2(&actions, pipe[1], STDERR_FILENO);
  pid_t process = 0;
  const int error = ::posix_spawn(&process, argv[0], &actions, nullptr, argv.data(), environ);
  ::posix_spawn_file_actions_destroy(&actions);
  ::close(pipe[1]);
  Finished finished{-1, error == 0 ? read_all(pipe[0]) : "cannot start " + arguments[0]};
  ::close(pipe[0]);
  int status = 0;
  if (error == 0 && ::waitpid(process, &status, 0) == process && WIFEXITED(status)) {
    finished.status = WEXITSTATUS(status);
  }
  return finished;
}

}  // namespace interop
