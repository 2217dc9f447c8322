#include "restart_stream.hpp"

#include <algorithm>
#include <new>
#include <utility>

#include "failure.hpp"
#include "paths.hpp"
#include "restart_steps.hpp"
#include "section_table.hpp"
#include "variable_files.hpp"

namespace p3dgrid::tool {
namespace {

using mod_p3dgrid::integer;
using mod_p3dgrid::logical;

logical precision_flag(const RestartForm& form) {
  return form.coding.precision == Precision::double_precision;
}

// Text is made of temporary files in double precision.
logical temporary_precision(const RestartForm& written) {
  return written.coding.encoding == Encoding::formatted || precision_flag(written);
}

// A whole read in double precision loses the triplets of layout 100, so that there is nothing to
// miss.
bool gives_triplets(const RestartForm& form) {
  if (form.layout == Layout::single_block) return true;
  return form.layout == Layout::triplets && form.coding.encoding == Encoding::formatted;
}

// OUT's own temporary file is there already, which makes these names as unique as its name.
std::string stem_beside(const std::string& temporary_path) {
  return temporary_path.substr(0, temporary_path.rfind('.')) + "-";
}

/// Runs a step of writing; failures come to name the file that is wanted.
template <class Step>
void writing(const std::string& shown, const Step& step) {
  try {
    step();
  } catch (const Failure& failure) {
    throw Failure(failure.status(), shown + ": not written: " + failure.what());
  }
}

}  // namespace

std::string obstacle_to_streaming(const RestartForm& read, const RestartForm& written) {
  if (read.layout == Layout::triplets && !reads_triplets(traits_of(read.layout), read.coding)) {
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
  if (read.coding.encoding == Encoding::formatted && !survives_double_precision(path)) {
    return "--stream reads text by way of double precision, and " + path +
           " holds numbers that this would round otherwise, or more than plain numbers; leave "
           "--stream out";
  }
  return "";
}

void RestartStream::read_variable(integer variable, integer variables) {
  mod_gridvars::readallvars = true;
  fill_section_table(in_blocks_, form_.layout, variables);
  mod_p3dgrid::readnextp3dvar(variable, name_for(path_, form_.coding.byte_order),
                              static_cast<integer>(form_.coding.encoding), precision_flag(form_),
                              extents_.blocks(), points_, values_, extents_.i, extents_.j,
                              extents_.k, static_cast<integer>(form_.layout), form_.multiblock);
}

Restart RestartStream::begin() {
  Restart restart;
  with_advice(path_, form_, grid_, [&] {
    restart = outline_of(path_, form_, extents_to_read_by(found_, grid_));
    extents_ = restart.extents;
    in_blocks_ = restart.sections;
    for (std::size_t b = 0; b < extents_.i.size(); ++b) {
      points_.push_back(static_cast<integer>(extents_.points_of(b)));
    }
    if (values_.allocate(1, extents_.points()) != mod_p3dgrid::allocation_done) {
      throw std::bad_alloc();
    }
    mod_p3dgrid::sqvar.deallocate();
    mod_p3dgrid::dqvar.deallocate();
    // The flags of layout 101 are read only for a variable that they may announce.
    const bool flags = form_.layout == Layout::single_block;
    const integer first_announced = solution_variables + 1;
    read_variable(flags ? first_announced : 1,
                  flags ? std::max(first_announced, restart.variables()) : restart.variables());
    take_run_data(restart, form_.layout);
    if (flags) take_extensions(path_, restart);
    variables_ = restart.variables();
    if (is_proven(found_)) return;
    require_plan(path_, form_, in_blocks_, extents_, grid_);
  });
  return restart;
}

std::span<const float> RestartStream::read(integer variable) {
  read_variable(variable, variables_);
  return std::as_const(values_).span();
}

void RestartStream::write(const std::string& path, const std::string& shown,
                          const RestartForm& written, const Restart& restart) {
  const integer count = counted_variables(written.layout, restart.variables());
  const integer blocks = extents_.blocks();
  const VariableFiles files(stem_beside(path), count);
  for (integer v = 1; v <= count; ++v) {
    read_variable(v, variables_);
    writing(shown, [&] {
      mod_p3dgrid::writenextp3dvar(v, files.prefix(), temporary_precision(written), blocks, points_,
                                   values_, extents_.i, extents_.j, extents_.k);
      files.require_own(v);
    });
  }
  values_.deallocate();
  set_run_data(restart, written.layout);
  fill_section_table(sections_in_blocks(restart, written.layout), written.layout,
                     restart.variables());
  writing(shown, [&] {
    mod_p3dgrid::combinep3dvarfiles(restart.triplets, name_for(path, written.coding.byte_order),
                                    static_cast<integer>(written.coding.encoding),
                                    precision_flag(written), blocks, blocks, extents_.i, extents_.j,
                                    extents_.k, static_cast<integer>(written.layout),
                                    written.multiblock);
  });
}

}  // namespace p3dgrid::tool
