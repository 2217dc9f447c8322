#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>

#include "unfinished_file.hpp"

namespace p3dgrid::tool {

/// What the names of temporary files begin with.
inline constexpr const char* temporary_prefix = ".p3dgrid-";

/// A file that comes into being whole or not at all.
///
/// It is written under a temporary name in the folder of its final one, `.p3dgrid-...tmp`, and
/// `commit` puts it in place in one step. Whatever ends the work before that (a failure, a signal)
/// removes the temporary file and leaves an earlier file of the final name as it was.
class OutputFile {
 public:
  /// Reserves the temporary file. Throws a Failure where `path` could not be put in place: its
  /// folder takes no files, or something else than a writable regular file stands there. A
  /// symbolic link stays, and the file it leads to is the one replaced.
  explicit OutputFile(std::string path);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile() = default;

  /// Where to write until `commit`.
  [[nodiscard]] const std::string& temporary_path() const { return temporary_->path(); }

  /// Forces the contents to the disk, then gives the file its name. An earlier file is replaced
  /// and hands on its permissions and, where the user may do that, its owner.
  void commit();

 private:
  void reserve();

  std::string path_;                     ///< as the user named it
  std::string target_;                   ///< where symbolic links lead to
  std::optional<struct stat> replaced_;  ///< the file that stands there
  std::optional<UnfinishedFile> temporary_;
};

/// Throws a Failure when writing `output` would destroy `input`, however the two are spelt.
void require_different_files(const std::string& input, const std::string& output);

}  // namespace p3dgrid::tool
