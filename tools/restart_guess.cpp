#include "restart_guess.hpp"

#include <filesystem>
#include <string_view>
#include <vector>

#include "failure.hpp"
#include "process.hpp"
#include "restart_file.hpp"
#include "restart_header.hpp"
#include "restart_plan.hpp"
#include "text_values.hpp"

namespace p3dgrid {
namespace {

/// Forms without text in the order in which they are tried: the stated layout first, then those
/// that are common and tell their extents themselves.
std::vector<RestartForm> candidates(const RestartForm& stated) {
  std::vector<RestartForm> forms;
  for (const Layout layout :
       {stated.layout, Layout::solution, Layout::function, Layout::time_step}) {
    for (const Encoding encoding : {Encoding::unformatted, Encoding::binary}) {
      for (const Precision precision : {Precision::single_precision, Precision::double_precision}) {
        for (const bool multiblock : {stated.multiblock, !stated.multiblock}) {
          if (!may_hold_count(layout) && multiblock != stated.multiblock) continue;
          forms.push_back({layout, encoding, precision, multiblock, stated.sections});
        }
      }
    }
  }
  return forms;
}

}  // namespace

bool lengths_fit(const std::string& path, const RestartForm& form,
                 const std::optional<Extents>& grid) {
  constexpr int read_unit = 201;
  mod_p3dgrid::p3dcloseunit(read_unit);  // where a failed read may have left it open
  const LibraryMessages silence([](std::string_view) {});
  if (!holds_extents(form.layout) && !grid) return false;
  try {
    const RestartHeader header = read_restart_header(path, form);
    const Sections sections = sections_of(path, form, header);
    RestartShape shape =
        shape_of(form, sections, holds_extents(form.layout) ? header.extents : *grid);
    shape.flags.front() = end_of_extensions;
    const Misfit misfit = misfit_of(path, form, plan_of(form, shape));
    // Which variables extend a file of layout 101 shows only behind its blocks.
    return misfit.fits() || (form.layout == Layout::single_block && misfit.longer);
  } catch (const Failure&) {
    return false;
  }
}

std::string restart_advice(const std::string& path, const RestartForm& stated,
                           const std::optional<Extents>& grid) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return "";
  if (begins_with_text(path)) {
    return stated.encoding == Encoding::formatted
               ? ""
               : "the file looks like text: try --restart-format formatted";
  }
  for (const RestartForm& form : candidates(stated)) {
    if (form == stated || !lengths_fit(path, form, grid)) continue;
    return "its lengths are those of a file read with " + options_between(stated, form);
  }
  return "";
}

RestartHeader header_with_advice(const std::string& path, const RestartForm& form) {
  try {
    return read_restart_header(path, form);
  } catch (const Unreadable& failure) {
    const std::string advice = restart_advice(path, form, std::nullopt);
    if (advice.empty()) throw;
    throw Failure(failure.status(), failure.what() + ("; " + advice));
  }
}

}  // namespace p3dgrid
