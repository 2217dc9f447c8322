#include "restart_header.hpp"

#include <cstdint>
#include <filesystem>
#include <limits>

#include "extents.hpp"
#include "failure.hpp"
#include "find.hpp"
#include "form_options.hpp"
#include "paths.hpp"

namespace p3dgrid::tool {
namespace {

using mod_p3dgrid::integer;
using mod_p3dgrid::logical;

constexpr integer read_unit = 201;

/// Closes the unit however the reading ends, so that the next file can be opened on it.
struct UnitCloser {
  UnitCloser() = default;
  UnitCloser(const UnitCloser&) = delete;
  UnitCloser& operator=(const UnitCloser&) = delete;
  ~UnitCloser() { mod_p3dgrid::p3dcloseunit(read_unit); }
};

/// The library hands over what a header holds, whatever it is.
void require_countable_points(const std::string& path, const Extents& extents) {
  for (std::size_t b = 0; b < extents.i.size(); ++b) {
    const std::int64_t layer = std::int64_t{extents.i[b]} * extents.j[b];
    constexpr std::int64_t most = std::numeric_limits<integer>::max();
    const bool negative = extents.i[b] < 0 || extents.j[b] < 0 || extents.k[b] < 0;
    if (!negative && (layer == 0 || extents.k[b] <= most / layer)) continue;
    throw Unreadable(path + ": block " + std::to_string(b + 1) + " has extents of " +
                     extents.text_of(b) + ", which no block can have");
  }
}

}  // namespace

RestartHeader read_restart_header(const std::string& path, const RestartForm& form) {
  // Counts of another file would be taken for this one's room.
  mod_p3dgrid::nfvar.deallocate();
  RestartHeader header;
  mod_p3dgrid::allocatable<integer, 1> idim, jdim, kdim;
  const logical dblprec = form.coding.precision == Precision::double_precision;
  try {
    const UnitCloser closer;
    mod_p3dgrid::readrestartheader(
        name_for(path, form.coding.byte_order), static_cast<integer>(form.coding.encoding), dblprec,
        header.blocks, static_cast<integer>(form.layout), form.multiblock, idim, jdim, kdim);
  } catch (const Halt&) {
    throw Unreadable(path + ": layout 0 with flow parameters cannot be read in single precision");
  }
  if (header.blocks < 1) {
    throw Unreadable(path + ": has a block count of " + std::to_string(header.blocks));
  }
  if (traits_of(form.layout).holds_extents()) header.extents = extents_from(idim, jdim, kdim);
  require_countable_points(path, header.extents);
  if (form.layout == Layout::function) {
    const auto counts = mod_p3dgrid::nfvar.span();
    header.functions.assign(counts.begin(), counts.end());
  }
  return header;
}

RestartHeader header_with_advice(const std::string& path, const RestartForm& form) {
  try {
    return read_restart_header(path, form);
  } catch (const Unreadable& failure) {
    const std::string help = advice(path, stated_as(form), std::nullopt);
    if (help.empty()) throw;
    throw Failure(failure.status(), failure.what(), "; " + help);
  }
}

bool talven_parameters_read() {
  return mod_p3dgrid::eqid == equations_with_parameters;
}

void require_regular_file(const std::string& path) {
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  if (error || !std::filesystem::exists(status) || std::filesystem::is_directory(status) ||
      std::filesystem::is_regular_file(status)) {
    return;  // what is wrong with it shows when it is opened
  }
  throw Failure(ExitStatus::unusable,
                path + ": is not a regular file; restart files are read more than once");
}

}  // namespace p3dgrid::tool
