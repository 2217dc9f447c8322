#pragma once

#include <functional>
#include <string>
#include <vector>

namespace p3dgrid::tool {

/// The ranks that run the program together. All of them call its functions in the same order.
class Team {
 public:
  /// Starts MPI. Only the leader, rank 0, prints: the standard streams of the others go to the null
  /// device.
  Team(int& argc, char**& argv);
  Team(const Team&) = delete;
  Team& operator=(const Team&) = delete;
  /// Ends MPI.
  ~Team();

  [[nodiscard]] int rank() const { return rank_; }
  [[nodiscard]] int size() const { return size_; }
  [[nodiscard]] bool is_leader() const { return rank_ == 0; }

  /// Runs a step on every rank. If it fails on any, throws the failure of the lowest such rank on
  /// all ranks. A step may use MPI only in its last statement, because a rank that has failed
  /// earlier does not reach it.
  void run_on_all(const std::function<void()>& step) const;
  /// The same for a step that only the leader runs.
  void run_on_leader(const std::function<void()>& step) const;

  /// Returns the leader's text on every rank.
  [[nodiscard]] std::string from_leader(std::string text) const;
  /// The bytes of all ranks in rank order, on the leader.
  [[nodiscard]] std::vector<char> gathered(const std::vector<char>& bytes) const;

 private:
  int rank_ = 0;
  int size_ = 1;
};

}  // namespace p3dgrid::tool
