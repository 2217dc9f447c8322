#include "restart_stream.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <deque>
#include <utility>

#include "failure.hpp"
#include "library.hpp"
#include "restart_conversion.hpp"
#include "restart_module.hpp"

namespace p3dgrid::tool {
namespace {

/// Whether a whole read returns triplets. In double precision those of layout 100 are lost.
bool gives_triplets(const RestartForm& form) {
  const LayoutTraits& layout = traits_of(form.layout);
  return layout.extensions || (layout.triplets && is_text(form.coding));
}

/// Most variables that the library keeps in temporary files.
constexpr integer most_streamed_variables = 15;

/// While an object of this class lives, new files are readable for the user alone.
class PrivateFiles {
 public:
  PrivateFiles() : before_(::umask(0077)) {}
  PrivateFiles(const PrivateFiles&) = delete;
  PrivateFiles& operator=(const PrivateFiles&) = delete;
  ~PrivateFiles() { ::umask(before_); }

 private:
  mode_t before_;
};

/// The temporary files for one variable each. They are removed with this object, or when a signal
/// ends the process. While it lives, new files are readable for the user alone.
class VariableFiles {
 public:
  /// @param stem  unique beginning of their paths
  VariableFiles(const std::string& stem, integer variables) : prefix_(prefix_for(stem)) {
    // Registered before they exist: a signal may come while the library is writing one.
    for (integer v = 1; v <= variables; ++v) {
      // The library appends the same to its prefix.
      std::array<char, 24> end{};
      std::snprintf(end.data(), end.size(), "%06d.tmp", static_cast<int>(v));
      files_.emplace_back(stem + end.data());
    }
  }

  [[nodiscard]] const mod_p3dgrid::FileName& prefix() const { return prefix_; }

  /// Throws a Failure if the library has written the variable to another file than expected.
  void require_own(integer variable) const {
    const std::string& expected = files_[static_cast<std::size_t>(variable) - 1].path();
    const std::string written = path_behind(mod_p3dgrid::tmpfile(variable).view());
    if (written == expected) return;
    ::unlink(written.c_str());
    throw Unusable(expected + ": is there already");
  }

 private:
  PrivateFiles private_files_;
  mod_p3dgrid::FileName prefix_;
  std::deque<UnfinishedFile> files_;
};

}  // namespace

std::string obstacle_to_streaming(const RestartForm& read, const RestartForm& written) {
  if (traits_of(read.layout).triplets && !reads_triplets(traits_of(read.layout), read.coding)) {
    return "--stream takes the blocks of layout 100 to begin with triplets, and single-precision "
           "files of it are read without; leave --stream out";
  }
  if (gives_triplets(read) && traits_of(written.layout).triplets) {
    return "--stream does not carry the triplets of layout " + std::string(name_of(read.layout)) +
           " over to layout " + name_of(written.layout) + "; leave --stream out";
  }
  return "";
}

std::string obstacle_to_streaming(const std::string& path, const RestartForm& read,
                                  const Restart& restart) {
  if (restart.variables() > most_streamed_variables) {
    return "--stream takes at most " + std::to_string(most_streamed_variables) +
           " variables, and there are " + std::to_string(restart.variables());
  }
  if (is_text(read.coding) && !survives_double_precision(path)) {
    return "--stream reads text by way of double precision, and " + path +
           " holds numbers that this would round otherwise, or more than plain numbers; leave "
           "--stream out";
  }
  return "";
}

void RestartStream::read_variable(integer variable, integer variables) {
  mod_gridvars::readallvars = true;
  set_section_table(in_blocks_, form_.layout, variables);
  mod_p3dgrid::readnextp3dvar(variable, name_for(path_, form_.coding), format_code(form_.coding),
                              precision_flag(form_.coding), extents_.blocks(), points_, values_,
                              extents_.i, extents_.j, extents_.k,
                              static_cast<integer>(form_.layout), form_.multiblock);
}

/// Reads one variable, and of the header what comes only with it.
void RestartStream::read_first(Restart& restart) {
  extents_ = restart.extents;
  in_blocks_ = restart.sections;
  for (std::size_t b = 0; b < extents_.i.size(); ++b) {
    points_.push_back(static_cast<integer>(extents_.points_of(b)));
  }
  require_memory(values_.allocate(1, extents_.points()));
  mod_p3dgrid::sqvar.deallocate();
  mod_p3dgrid::dqvar.deallocate();
  // The flags of layout 101 are read only for a variable that they may announce.
  const bool flags = traits_of(form_.layout).extensions;
  const integer first_announced = solution_variables + 1;
  read_variable(flags ? first_announced : 1,
                flags ? std::max(first_announced, restart.variables()) : restart.variables());
  take_run_data(restart, form_.layout);
  if (flags) take_extensions(path_, restart);
  variables_ = restart.variables();
}

Restart RestartStream::begin() {
  return read_restart(path_, found_, grid_, [this](Restart& restart) { read_first(restart); });
}

std::span<const float> RestartStream::read(integer variable) {
  read_variable(variable, variables_);
  return std::as_const(values_).span();
}

void RestartStream::write(const OutputFile& output, const RestartForm& written,
                          const Restart& restart) {
  const std::string& path = output.temporary_path();
  const integer count = counted_variables(written.layout, restart.variables());
  const integer blocks = extents_.blocks();
  // Based on the name of the output's temporary file, these names are as unique as that one.
  const VariableFiles files(path.substr(0, path.rfind('.')) + "-", count);
  // The library combines text from temporary files in double precision.
  const mod_p3dgrid::logical precision = is_text(written.coding) || precision_flag(written.coding);
  for (integer v = 1; v <= count; ++v) {
    read_variable(v, variables_);
    output.require_writable(obstacle(v, written, std::as_const(values_), 1));
    output.write([&] {
      mod_p3dgrid::writenextp3dvar(v, files.prefix(), precision, blocks, points_, values_,
                                   extents_.i, extents_.j, extents_.k);
      files.require_own(v);
    });
  }
  values_.deallocate();
  set_run_data(restart, written.layout);
  set_section_table(sections_in_blocks(restart, written.layout), written.layout,
                    restart.variables());
  output.write([&] {
    mod_p3dgrid::combinep3dvarfiles(restart.triplets, name_for(path, written.coding),
                                    format_code(written.coding), precision_flag(written.coding),
                                    blocks, blocks, extents_.i, extents_.j, extents_.k,
                                    static_cast<integer>(written.layout), written.multiblock);
  });
}

}  // namespace p3dgrid::tool
