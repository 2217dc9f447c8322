#include "faults/child.hpp"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "MOD_P3DReader.hpp"

namespace faults {
namespace {

[[noreturn]] void be_child(const std::function<void()>& body, int error_output) {
  ::dup2(error_output, STDERR_FILENO);
  ::dup2(::open("/dev/null", O_WRONLY), STDOUT_FILENO);
  mod_p3dgrid::p3dsetrunend({});
  mod_p3dgrid::p3dsetmessages({});
  body();
  std::exit(0);
}

std::string all_from(int file) {
  std::string text;
  std::array<char, 4096> piece{};
  for (ssize_t got = 0; (got = ::read(file, piece.data(), piece.size())) > 0;) {
    text.append(piece.data(), static_cast<std::size_t>(got));
  }
  return text;
}

}  // namespace

ChildEnd run_in_child(const std::function<void()>& body) {
  std::array<int, 2> pipe{};
  if (::pipe2(pipe.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  std::fflush(nullptr);
  const pid_t child = ::fork();
  if (child < 0) throw std::runtime_error("no process");
  if (child == 0) be_child(body, pipe[1]);
  ::close(pipe[1]);
  ChildEnd end;
  end.error = all_from(pipe[0]);
  ::close(pipe[0]);
  int status = 0;
  ::waitpid(child, &status, 0);
  constexpr int by_signal = 128;
  end.status = WIFEXITED(status) ? WEXITSTATUS(status) : by_signal + WTERMSIG(status);
  return end;
}

}  // namespace faults
