#include "mod_p3dgrid/file_name.hpp"

#include <new>

#include "state/run_end.hpp"

namespace mod_p3dgrid {

FileName::FileName(std::string_view name) try {
  const std::size_t end = name.find_last_not_of(' ') + 1;  // 0 for a blank name
  if (end > length) {
    fail_run("file name of " + std::to_string(end) + " characters, at most " +
             std::to_string(length) + " are possible: " + std::string(name));
  }
  if (name.find('\0') != name.npos) {
    fail_run("file name with a NUL character: " + std::string(name.substr(0, name.find('\0'))));
  }
  characters_.fill(' ');
  std::copy_n(name.begin(), end, characters_.begin());
} catch (const std::bad_alloc&) {
  fail_without_memory(out_of_memory_message);
}

}  // namespace mod_p3dgrid
