#include "output_file.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <random>
#include <system_error>

#include "failure.hpp"
#include "file_names.hpp"
#include "gzip.hpp"

namespace p3dgrid::tool {
namespace {

constexpr std::array ending_signals = {SIGHUP, SIGINT, SIGTERM};

// The paths that the signal handler removes, which may touch nothing else of the program.
constexpr std::size_t places = 1 << 14;
std::array<std::atomic<const char*>, places> unfinished_paths{};
static_assert(std::atomic<const char*>::is_always_lock_free);

extern "C" void remove_unfinished_files(int signal) {
  for (const auto& path : unfinished_paths) {
    if (const char* const name = path.load()) ::unlink(name);
  }
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

// All three are blocked while one is handled, so that a second one does not interrupt the removal.
// A signal that the caller ignores, as `nohup` does, stays ignored.
void watch_ending_signals() {
  static const bool watched = [] {
    struct sigaction action {};
    action.sa_handler = remove_unfinished_files;
    for (const int signal : ending_signals) ::sigaddset(&action.sa_mask, signal);
    for (const int signal : ending_signals) {
      struct sigaction before {};
      ::sigaction(signal, nullptr, &before);
      if (before.sa_handler != SIG_IGN) ::sigaction(signal, &action, nullptr);
    }
    return true;
  }();
  static_cast<void>(watched);
}

std::size_t take_place(const char* path) {
  for (std::size_t place = 0; place < places; ++place) {
    if (unfinished_paths[place] != nullptr) continue;
    unfinished_paths[place] = path;
    return place;
  }
  throw Unusable(std::string(path) + ": too many temporary files");
}

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }
  [[nodiscard]] int number() const { return number_; }
  [[nodiscard]] bool open() const { return number_ >= 0; }

 private:
  int number_;
};

std::string reason(int error_number) {
  return std::generic_category().message(error_number);
}

[[noreturn]] void fail(const std::string& path, const std::string& what) {
  throw Unusable(path + ": " + what);
}

std::optional<struct stat> status_of(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return std::nullopt;
  return status;
}

/// Throws a Failure when writing `output` would destroy `input`, however the two are spelt.
void require_different_files(const std::string& input, const std::string& output) {
  const auto read = status_of(input);
  const auto written = status_of(output);
  if (!read || !written) return;
  if (read->st_dev == written->st_dev && read->st_ino == written->st_ino) {
    fail(output, "is the file to be read; give the result another name");
  }
}

/// Resolves links one by one, because the last one may lead to a file that does not exist yet.
std::string target_of(const std::string& path) {
  constexpr int most_links = 40;
  std::filesystem::path target = path;
  std::error_code error;
  for (int links = 0; std::filesystem::is_symlink(target, error); ++links) {
    if (links == most_links) fail(path, reason(ELOOP));
    const auto next = std::filesystem::read_symlink(target, error);
    if (error) fail(path, error.message());
    target = target.parent_path() / next;  // an absolute `next` stands alone
  }
  return target.string();
}

const char* kind_of(mode_t mode) {
  return S_ISDIR(mode)    ? "a folder"
         : S_ISFIFO(mode) ? "a pipe"
         : S_ISSOCK(mode) ? "a socket"
                          : "a device";
}

std::string temporary_name() {
  std::random_device random;
  char name[48];
  std::snprintf(name, sizeof name, "%s%ld-%08x.tmp", temporary_prefix, long{::getpid()}, random());
  return name;
}

/// Forces what was written to the disk; false, with the reason in `errno`, if that fails.
bool force_to_disk(const Descriptor& file) {
  int result;
  do {
    result = ::fsync(file.number());
  } while (result != 0 && errno == EINTR);
  return result == 0;
}

}  // namespace

UnfinishedFile::UnfinishedFile(std::string path) : path_(std::move(path)), place_(places) {
  watch_ending_signals();
  place_ = take_place(path_.c_str());
}

UnfinishedFile::~UnfinishedFile() {
  if (place_ == places) return;
  ::unlink(path_.c_str());
  release();
}

void UnfinishedFile::release() {
  unfinished_paths[place_] = nullptr;
  place_ = places;
}

bool create_temporary(std::optional<UnfinishedFile>& file, const std::string& folder, mode_t mode) {
  for (int attempt = 0; attempt < 100; ++attempt) {
    // Registered first, so that no signal can come between the two.
    file.emplace((std::filesystem::path(folder) / temporary_name()).string());
    const Descriptor created(
        ::open(file->path().c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    if (created.open()) return true;
    file->release();  // a file of this name belongs to another process
    if (errno != EEXIST) break;
  }
  return false;
}

OutputFile::OutputFile(std::string path, const std::vector<std::string>& inputs)
    : path_(std::move(path)) {
  for (const std::string& input : inputs) require_different_files(original_path(input), path_);
  target_ = target_of(path_);
  replaced_ = status_of(target_);
  const std::filesystem::path target = target_;
  if (replaced_ && !S_ISREG(replaced_->st_mode)) {
    fail(path_,
         std::string("is ") + kind_of(replaced_->st_mode) + "; only regular files are replaced");
  }
  if (!target.has_filename()) fail(path_, "does not name a file");
  if (replaced_ && ::faccessat(AT_FDCWD, target_.c_str(), W_OK, AT_EACCESS) != 0) {
    fail(path_, "is write-protected: " + reason(errno));
  }
  reserve(temporary_);
}

void OutputFile::reserve(std::optional<UnfinishedFile>& file) const {
  // The new file must not be readable for more users than the one it replaces.
  const mode_t mode = replaced_ ? (replaced_->st_mode & 0666) | S_IRUSR | S_IWUSR : 0666;
  const std::filesystem::path folder = std::filesystem::path(target_).parent_path();
  if (create_temporary(file, folder.string(), mode)) return;
  fail(path_, "cannot be written in its folder: " + reason(errno));
}

void OutputFile::require_writable(const std::string& obstacle) const {
  if (!obstacle.empty()) fail(path_, "not written: " + obstacle);
}

void OutputFile::write(const std::function<void()>& step) const {
  try {
    step();
  } catch (const Failure& failure) {
    throw Failure(failure.status(), path_ + ": not written: " + failure.what());
  }
}

void OutputFile::stream(const std::function<void()>& step) const {
  try {
    step();
  } catch (const Error& error) {
    const std::string& file = error.details().file;
    if (file != temporary_path()) throw;
    throw Unusable(path_ + ": not written" + std::string(error.what()).substr(file.size()));
  }
}

void OutputFile::commit() {
  if (is_compressed_name(path_)) {
    std::optional<UnfinishedFile> compressed;
    reserve(compressed);
    write([&] { compress_file(temporary_path(), compressed->path()); });
    put_in_place(*compressed);
  } else {
    put_in_place(*temporary_);
  }
}

void OutputFile::put_in_place(UnfinishedFile& written) const {
  {
    const Descriptor file(::open(written.path().c_str(), O_RDONLY | O_CLOEXEC));
    if (!file.open()) fail(path_, "cannot be completed: " + reason(errno));
    if (replaced_) {
      // Only some users can change the owner. A change may clear permission bits, so they follow.
      if (::fchown(file.number(), replaced_->st_uid, replaced_->st_gid) != 0) errno = 0;
      if (::fchmod(file.number(), replaced_->st_mode & 07777) != 0) {
        fail(path_, "cannot keep its permissions: " + reason(errno));
      }
    }
    if (!force_to_disk(file)) fail(path_, "cannot be completed: " + reason(errno));
  }
  if (std::rename(written.path().c_str(), target_.c_str()) != 0) {
    fail(path_, "cannot be replaced: " + reason(errno));
  }
  written.release();

  // The new name is on the disk only once its folder is, which not every file system supports.
  const std::filesystem::path folder = std::filesystem::path(target_).parent_path();
  const Descriptor directory(
      ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (directory.open()) static_cast<void>(force_to_disk(directory));
}

}  // namespace p3dgrid::tool
