#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "mod_p3dgrid/file_name.hpp"

namespace mod_p3dgrid::fortran {

/// A file name of the host. One of more than 40 characters stands for its path for the time of an
/// operation: messages and `dispreadwrite` get its first 40 characters.
class HostName {
 public:
  HostName(const char* name, std::size_t length);
  HostName(const HostName&) = delete;
  HostName& operator=(const HostName&) = delete;
  ~HostName();

  [[nodiscard]] operator const FileName&() const { return name_; }

 private:
  bool is_long_;
  FileName name_;
};

/// The whole name for which an operation got `name`.
[[nodiscard]] std::string whole_name(std::string_view name);

/// Whether the host's procedure translates names to paths.
void set_host_finds_paths(bool finds);

}  // namespace mod_p3dgrid::fortran
