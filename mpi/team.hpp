#pragma once

#include <functional>
#include <string>
#include <vector>

namespace p3dgrid::tool {

/// The ranks that run the program together. All of them call its functions in the same order.
class Team {
 public:
  /// Starts MPI. Only the leader prints: the standard streams of the others go to the null device.
  Team(int& argc, char**& argv);
  Team(const Team&) = delete;
  Team& operator=(const Team&) = delete;
  /// Ends MPI.
  ~Team();

  [[nodiscard]] int rank() const { return rank_; }
  [[nodiscard]] int size() const { return size_; }
  [[nodiscard]] bool leads() const { return rank_ == 0; }

  /// Runs a step on every rank. If it fails on any, throws the failure of the first of these on
  /// all. A step may use MPI only in its last statement, because a rank that has failed before does
  /// not take part.
  void together(const std::function<void()>& step) const;
  /// The same for a step of the leader.
  void lead(const std::function<void()>& step) const;

  /// The text of the leader.
  [[nodiscard]] std::string from_leader(std::string text) const;
  /// The bytes of all ranks in their order, on the leader.
  [[nodiscard]] std::vector<char> gathered(const std::vector<char>& bytes) const;

 private:
  int rank_ = 0;
  int size_ = 1;
};

}  // namespace p3dgrid::tool
