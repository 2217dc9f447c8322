#pragma once

#include <string>
#include <utility>

#include "support/restart_form.hpp"
#include "support/scratch_directory.hpp"
#include "support/solution.hpp"

namespace interop {

/// The Fortran program for restart files, in a directory of its own.
class FortranRestart {
 public:
  explicit FortranRestart(std::string program) : program_(std::move(program)) {}

  /// Its own restart file.
  [[nodiscard]] std::string file() const { return scratch_.file("restart"); }

  void write(const RestartForm& form, const Solution& solution) const;

  /// Reads a restart file of these blocks.
  [[nodiscard]] Solution read(const std::string& path, const RestartForm& form,
                              const std::vector<Extents>& extents) const;

 private:
  void run(const char* verb, const std::string& path, const RestartForm& form,
           const std::vector<Extents>& extents) const;

  ScratchDirectory scratch_;
  std::string program_;
};

}  // namespace interop
