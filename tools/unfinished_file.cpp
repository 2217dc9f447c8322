#include "unfinished_file.hpp"

#include <unistd.h>

#include <array>
#include <atomic>

#include "failure.hpp"

namespace p3dgrid::tool {
namespace {

constexpr std::array ending_signals = {SIGHUP, SIGINT, SIGTERM};

// The paths that the signal handler has to remove; it may touch nothing else of the program.
constexpr std::size_t places = 32;
std::array<std::atomic<const char*>, places> unfinished_paths{};
static_assert(std::atomic<const char*>::is_always_lock_free);

extern "C" void remove_unfinished_files(int signal) {
  for (const auto& path : unfinished_paths) {
    if (const char* const name = path.load()) ::unlink(name);
  }
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

// All three are held back while one is handled, so that no second one cuts the removal short. A
// signal that the caller has turned off, as `nohup` does, stays off.
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
  throw Failure(ExitStatus::unusable, std::string(path) + ": too many temporary files");
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

SignalsHeld::SignalsHeld() {
  sigset_t held;
  ::sigemptyset(&held);
  for (const int signal : ending_signals) ::sigaddset(&held, signal);
  ::sigprocmask(SIG_BLOCK, &held, &before_);
}

SignalsHeld::~SignalsHeld() {
  ::sigprocmask(SIG_SETMASK, &before_, nullptr);
}

}  // namespace p3dgrid::tool
