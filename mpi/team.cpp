#include "team.hpp"

#include <fcntl.h>
#include <mpi.h>
#include <unistd.h>

#include <optional>

#include "tools/failure.hpp"

namespace p3dgrid::tool {
namespace {

void silence(int descriptor) {
  const int null_device = ::open("/dev/null", O_RDWR | O_CLOEXEC);
  if (null_device < 0) return;
  ::dup2(null_device, descriptor);
  ::close(null_device);
}

std::string broadcast(std::string text, int from) {
  int length = static_cast<int>(text.size());
  MPI_Bcast(&length, 1, MPI_INT, from, MPI_COMM_WORLD);
  text.resize(static_cast<std::size_t>(length));
  MPI_Bcast(text.data(), length, MPI_CHAR, from, MPI_COMM_WORLD);
  return text;
}

}  // namespace

Team::Team(int& argc, char**& argv) {
  MPI_Init(&argc, &argv);
  MPI_Comm_rank(MPI_COMM_WORLD, &rank_);
  MPI_Comm_size(MPI_COMM_WORLD, &size_);
  if (is_leader()) return;
  silence(STDOUT_FILENO);
  silence(STDERR_FILENO);
}

Team::~Team() {
  MPI_Finalize();
}

void Team::run_on_all(const std::function<void()>& step) const {
  const std::optional<Failure> own = failure_of(step);
  const int mine = own ? rank_ : size_;
  int first = size_;
  MPI_Allreduce(&mine, &first, 1, MPI_INT, MPI_MIN, MPI_COMM_WORLD);
  if (first == size_) return;
  int status = own ? static_cast<int>(own->status()) : 0;
  MPI_Bcast(&status, 1, MPI_INT, first, MPI_COMM_WORLD);
  const std::string message = broadcast(own ? own->what() : "", first);
  throw Failure(ExitStatus{status}, "", message);  // is printable already
}

void Team::run_on_leader(const std::function<void()>& step) const {
  run_on_all([&] {
    if (is_leader()) step();
  });
}

std::string Team::from_leader(std::string text) const {
  return broadcast(std::move(text), 0);
}

std::vector<char> Team::gathered(const std::vector<char>& bytes) const {
  const int count = static_cast<int>(bytes.size());
  std::vector<char> all(is_leader() ? bytes.size() * static_cast<std::size_t>(size_) : 0);
  MPI_Gather(bytes.data(), count, MPI_CHAR, all.data(), count, MPI_CHAR, 0, MPI_COMM_WORLD);
  return all;
}

}  // namespace p3dgrid::tool
