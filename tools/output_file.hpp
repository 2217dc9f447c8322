#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace p3dgrid::tool {

/// A file that is removed with this object, and when a signal (HUP, INT, TERM) ends the process
/// before that. The file need not exist.
class UnfinishedFile {
 public:
  /// Throws a Failure if the signal handler's table is full.
  explicit UnfinishedFile(std::string path);
  UnfinishedFile(const UnfinishedFile&) = delete;
  UnfinishedFile& operator=(const UnfinishedFile&) = delete;
  ~UnfinishedFile();

  [[nodiscard]] const std::string& path() const { return path_; }

  /// Keeps the file.
  void release();

 private:
  std::string path_;
  std::size_t place_;  ///< in the handler's table
};

/// Creates a file under a new name, `.p3dgrid-...tmp`, in the folder. False, with the reason in
/// `errno`, if that fails.
[[nodiscard]] bool create_temporary(std::optional<UnfinishedFile>& file, const std::string& folder,
                                    mode_t mode);

/// What the names of temporary files begin with.
inline constexpr const char* temporary_prefix = ".p3dgrid-";

/// A file that is replaced whole or not at all.
///
/// It is written under a temporary name in the folder of its final one, and `commit` renames it,
/// compressed if the final name asks for it. A failure or a signal before that removes the
/// temporary file and leaves an earlier file as it was.
class OutputFile {
 public:
  /// Creates the temporary file. Throws a Failure if the file could not be put in place: its folder
  /// is not writable, or `path` is something else than a writable regular file. A symbolic link
  /// stays, and the file it leads to is replaced.
  /// @param inputs  files that are read; `path` must not be one of them
  explicit OutputFile(std::string path, const std::vector<std::string>& inputs = {});

  /// As the user named it.
  [[nodiscard]] const std::string& path() const { return path_; }

  /// Where to write until `commit`.
  [[nodiscard]] const std::string& temporary_path() const { return temporary_->path(); }

  /// Throws a Failure if there is an obstacle to writing the file.
  void require_writable(const std::string& obstacle) const;

  /// Runs a step of writing the temporary file. Failures of it name the final file.
  void write(const std::function<void()>& step) const;

  /// The same for a step that also reads. Failures to read keep their message.
  void stream(const std::function<void()>& step) const;

  /// Forces the contents to the disk, then renames the file. It takes over the permissions of an
  /// earlier file and, if the user may do that, its owner.
  void commit();

 private:
  void reserve(std::optional<UnfinishedFile>& file) const;
  void put_in_place(UnfinishedFile& written) const;

  std::string path_;
  std::string target_;                   ///< where symbolic links lead to
  std::optional<struct stat> replaced_;  ///< the file that stands there
  std::optional<UnfinishedFile> temporary_;
};

}  // namespace p3dgrid::tool
