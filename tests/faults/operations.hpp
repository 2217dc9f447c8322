#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "mod_p3dgrid/arrays.hpp"

/// Every operation of the module on every kind of file, as cases that can be run again and again.
namespace faults {

/// Values of the file-format code.
inline constexpr int unformatted = 0, formatted = 1;

/// A call with its arguments, ready to be made once.
struct Started {
  std::function<void()> call;  ///< the library alone; closes what the operation leaves open
  std::function<std::string()> result;  ///< all that it has brought about, as bytes
};

struct Operation {
  std::string name;
  std::map<std::string, std::string> files;  ///< by name, what is there before
  std::function<Started()> start;            ///< sets the module up and makes arguments
  std::string input;           ///< file to be damaged; empty for operations that read none
  std::size_t header = 0;      ///< bytes of it that are header
  std::size_t needed = 0;      ///< bytes of it that are read
  int iformat = 0;             ///< of it
  std::string output = {};     ///< file that is written; empty for operations that write none
  bool deletes_input = false;  ///< whatever becomes of its reading
  /// Whether a file with a damaged header may be read to `result`.
  std::function<bool(const std::string& result, const std::string& undamaged)> may_read_as =
      nullptr;
};

[[nodiscard]] std::vector<Operation> grid_reads();
[[nodiscard]] std::vector<Operation> grid_header_reads();
[[nodiscard]] std::vector<Operation> grid_writes();
[[nodiscard]] std::vector<Operation> restart_reads();
[[nodiscard]] std::vector<Operation> restart_header_reads();
[[nodiscard]] std::vector<Operation> restart_header_writes();
[[nodiscard]] std::vector<Operation> restart_writes();
[[nodiscard]] std::vector<Operation> restart_checks();
[[nodiscard]] std::vector<Operation> variable_reads();
[[nodiscard]] std::vector<Operation> variable_writes();
/// Each once for every file that may be damaged, or once in all.
[[nodiscard]] std::vector<Operation> combinations();
[[nodiscard]] std::vector<Operation> combination_writes();
[[nodiscard]] std::vector<Operation> tecplot_writes();

/// A group of operations, to name a test by.
struct OperationGroup {
  const char* name;
  std::vector<Operation> (*all)();
};
[[nodiscard]] std::vector<OperationGroup> reading_groups();
[[nodiscard]] std::vector<OperationGroup> writing_groups();
[[nodiscard]] std::vector<OperationGroup> all_groups();

/// Whether a result that begins with a flow array holds the undamaged one's values at
/// all its points, be they fewer.
[[nodiscard]] bool same_flow(const std::string& result, const std::string& undamaged);

/// Closes a unit that an operation leaves open, as its host does; or leaves that to the end of the
/// run, if `units_stay_open`.
void close_for_host(int unit);
extern bool units_stay_open;

/// Puts the operation's files in place and removes what an earlier run has written.
void place_files(const Operation& operation);

/// Appends values to a result.
template <class T>
void put(std::string& bytes, const T& value) {
  bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}
template <class T, std::size_t Rank>
void put(std::string& bytes, const mod_p3dgrid::allocatable<T, Rank>& array) {
  for (std::size_t d = 1; d <= Rank; ++d) put(bytes, array.extent(d));
  bytes.append(reinterpret_cast<const char*>(array.data()),
               static_cast<std::size_t>(array.size()) * sizeof(T));
}

}  // namespace faults
