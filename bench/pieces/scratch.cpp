#include "pieces/scratch.hpp"

#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "MOD_P3DReader.hpp"

namespace pieces {
namespace {

class ScratchFile {
 public:
  ScratchFile() {
    const char* const memory = "/dev/shm";
    path_ = ::access(memory, W_OK) == 0 ? std::filesystem::path(memory)
                                        : std::filesystem::temp_directory_path();
    path_ /= "p3dgrid-pieces-" + std::to_string(::getpid());
    mod_p3dgrid::p3dsetpaths([path = path_.string()](std::string_view) { return path; });
  }
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;
  ~ScratchFile() {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

const ScratchFile& scratch_file() {
  static const ScratchFile file;
  return file;
}

}  // namespace

void use_scratch_file() {
  static_cast<void>(scratch_file());
}

void fill_scratch_file(std::string_view contents) {
  std::ofstream file(scratch_file().path(), std::ios::binary);
  file << contents;
  if (!file.flush()) throw std::runtime_error("cannot write " + scratch_file().path().string());
}

template <class Real>
std::vector<Real> sample_values(std::size_t count) {
  std::vector<Real> values(count);
  for (std::size_t i = 0; i < count; ++i) {
    const auto x = static_cast<double>(i);
    values[i] = static_cast<Real>(std::sin(1e-3 * x) * std::exp(3.0 * std::cos(7e-3 * x)));
  }
  return values;
}
template std::vector<float> sample_values(std::size_t count);
template std::vector<double> sample_values(std::size_t count);

mod_p3dgrid::Unit unit_of(mod_p3dgrid::integer iformat) {
  constexpr mod_p3dgrid::integer number = 99;
  return {number, iformat};
}

}  // namespace pieces
