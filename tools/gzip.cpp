#include "gzip.hpp"

#include <fcntl.h>
#include <unistd.h>
#include <zlib.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mod_p3dgrid/run.hpp>
#include <new>
#include <optional>
#include <system_error>
#include <vector>

#include "failure.hpp"
#include "output_file.hpp"
#include "progress.hpp"

namespace p3dgrid::tool {
namespace {

constexpr std::size_t buffer_size = 1 << 17;

/// The paths of unpacked files by those of their copies.
std::map<std::string, std::string, std::less<>>& originals() {
  static std::map<std::string, std::string, std::less<>> paths;
  return paths;
}

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

File opened(const std::string& path, const char* mode) {
  return {std::fopen(path.c_str(), mode), std::fclose};
}

[[noreturn]] void fail(const std::string& what) {
  const int error = errno;
  throw Unusable(what + std::generic_category().message(error));
}

// The third byte stands for the only method of compression there is. A binary file could begin with
// the first two.
bool is_compressed(const std::string& path) {
  constexpr std::string_view beginning = "\x1f\x8b\x08";
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return false;  // a pipe is read only once
  const File file = opened(path, "rbe");
  std::array<char, beginning.size()> bytes{};
  return file && std::fread(bytes.data(), 1, bytes.size(), file.get()) == bytes.size() &&
         std::string_view(bytes.data(), bytes.size()) == beginning;
}

/// Unpacks all members of a file.
/// @param cannot  what to say if the result cannot be written
void unpack(const std::string& path, std::FILE* from, std::FILE* to, const std::string& cannot) {
  constexpr int gzip_only = 16;
  z_stream stream{};
  if (::inflateInit2(&stream, MAX_WBITS + gzip_only) != Z_OK) throw std::bad_alloc();
  const std::unique_ptr<z_stream, int (*)(z_stream*)> at_end(&stream, ::inflateEnd);
  std::vector<Bytef> in(buffer_size), out(buffer_size);
  const auto size = static_cast<std::int64_t>(std::filesystem::file_size(path));
  std::int64_t taken = 0;
  int status = Z_OK;
  const auto place = [&] { return "at byte " + std::to_string(taken - stream.avail_in); };
  for (;;) {
    if (stream.avail_in == 0) {
      stream.next_in = in.data();
      stream.avail_in = static_cast<uInt>(std::fread(in.data(), 1, in.size(), from));
      if (stream.avail_in == 0) break;
      taken += stream.avail_in;
      show_progress({.path = path, .bytes = taken, .size = size});
    }
    if (status == Z_STREAM_END) ::inflateReset(&stream);  // another member follows
    stream.next_out = out.data();
    stream.avail_out = buffer_size;
    status = ::inflate(&stream, Z_NO_FLUSH);
    if (status == Z_MEM_ERROR) throw std::bad_alloc();
    if (status != Z_OK && status != Z_STREAM_END) {
      throw Mismatch(path + ": its compressed data are damaged " + place() + ": " +
                     (stream.msg != nullptr ? stream.msg : ::zError(status)));
    }
    const std::size_t made = buffer_size - stream.avail_out;
    if (std::fwrite(out.data(), 1, made, to) != made) fail(cannot);
  }
  if (std::ferror(from) != 0) fail(path + ": ");
  if (status != Z_STREAM_END) {
    throw Mismatch(path + ": is cut short " + place() + ", inside compressed data");
  }
}

std::string folder_for(const std::string& output) {
  const char* const temporary = std::getenv("TMPDIR");
  if (output.empty()) return temporary != nullptr && *temporary != '\0' ? temporary : "/tmp";
  const std::string folder = std::filesystem::path(output).parent_path().string();
  return folder.empty() ? "." : folder;
}

}  // namespace

std::string path_to_read(const std::string& path, const std::string& output) {
  if (!is_compressed(path)) return path;
  const std::string folder = folder_for(output);
  const std::string cannot = path + ": cannot be unpacked in " + folder + ": ";
  std::optional<UnfinishedFile> file;
  if (!create_temporary(file, folder, S_IRUSR | S_IWUSR)) fail(cannot);
  const File from = opened(path, "rbe");
  if (!from) fail(path + ": ");
  File to = opened(file->path(), "wbe");
  if (!to) fail(cannot);
  file.reset();  // removes its name
  unpack(path, from.get(), to.get(), cannot);
  // The descriptor keeps the file, and gives it a path, until the process ends. Numbers of as many
  // digits: no path begins like another.
  const int descriptor = ::fcntl(::fileno(to.get()), F_DUPFD_CLOEXEC, 100);
  if (descriptor < 0 || std::fclose(to.release()) != 0) fail(cannot);
  const std::string copy = "/proc/self/fd/" + std::to_string(descriptor);
  if (::access(copy.c_str(), R_OK) != 0) fail(path + ": cannot be unpacked without /proc: ");
  originals()[copy] = path;
  return copy;
}

std::string original_path(std::string_view path) {
  const auto found = originals().find(path);
  return found == originals().end() ? std::string(path) : found->second;
}

std::string with_original_paths(std::string_view text) {
  std::string result(text);
  for (const auto& [copy, path] : originals()) {
    const std::string original = mod_p3dgrid::p3dprintable(path);
    for (std::size_t at = 0; (at = result.find(copy, at)) != result.npos; at += original.size()) {
      result.replace(at, copy.size(), original);
    }
  }
  return result;
}

void compress_file(const std::string& from, const std::string& to) {
  const File in = opened(from, "rbe");
  std::unique_ptr<gzFile_s, int (*)(gzFile)> out(::gzopen(to.c_str(), "wbe"), ::gzclose);
  if (!in || !out) fail("");
  std::vector<char> buffer(buffer_size);
  std::int64_t taken = 0;
  while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), in.get())) {
    if (::gzwrite(out.get(), buffer.data(), static_cast<unsigned>(count)) == 0) fail("");
    taken += static_cast<std::int64_t>(count);
    show_progress({.path = to, .writing = true, .bytes = taken});
  }
  if (std::ferror(in.get()) != 0 || ::gzclose(out.release()) != Z_OK) fail("");
}

}  // namespace p3dgrid::tool
