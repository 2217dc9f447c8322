#pragma once

#include <sys/types.h>

#include <MOD_P3DReader.hpp>
#include <deque>
#include <string>

#include "unfinished_file.hpp"

namespace p3dgrid::tool {

/// Most variables that the library keeps in temporary files.
inline constexpr mod_p3dgrid::integer most_streamed_variables = 15;

/// The temporary files that variables go through one at a time. They are gone when this object is,
/// or when a signal ends the process. While it lives, new files are readable for the user alone.
class VariableFiles {
 public:
  /// @param stem       path with which their names begin; unique to this run
  /// @param variables  number of files, at most `most_streamed_variables`
  VariableFiles(const std::string& stem, mod_p3dgrid::integer variables);
  VariableFiles(const VariableFiles&) = delete;
  VariableFiles& operator=(const VariableFiles&) = delete;
  ~VariableFiles();

  /// What the library is to begin the names of these files with.
  [[nodiscard]] const mod_p3dgrid::FileName& prefix() const { return prefix_; }

  /// Throws a Failure when the library has given the variable another file than the expected one.
  void require_own(mod_p3dgrid::integer variable) const;

 private:
  mod_p3dgrid::FileName prefix_;
  std::deque<UnfinishedFile> files_;
  mode_t mask_before_;
};

}  // namespace p3dgrid::tool
