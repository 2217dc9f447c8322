#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "mod_p3dgrid/file_name.hpp"

namespace mod_p3dgrid::fortran {

/// A file name of the host. For the duration of an operation, a name of more than 40 characters is
/// replaced by a unique one made from its first 40, which messages and `dispreadwrite` receive.
class HostName {
 public:
  HostName(const char* name, std::size_t length);
  HostName(const HostName&) = delete;
  HostName& operator=(const HostName&) = delete;
  ~HostName();

  [[nodiscard]] operator const FileName&() const { return name_; }

 private:
  FileName name_;
};

/// The whole name that `name` replaces.
[[nodiscard]] std::string whole_name(std::string_view name);

/// Whether the host's procedure translates names to paths.
void set_host_finds_paths(bool finds);

}  // namespace mod_p3dgrid::fortran
