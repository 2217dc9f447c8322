#pragma once

/// @file
/// What `mod_p3dgrid` requires of its host. A host defines all of these names, or links
/// `mod_p3dgrid::gridvars_minimal`, which defines them for stand-alone programs.

#include <optional>

#include "mod_p3dgrid/arrays.hpp"
#include "mod_p3dgrid/file_name.hpp"
#include "mod_p3dgrid/logical.hpp"

#pragma GCC visibility push(default)

/// Names that the host defines.
namespace mod_gridvars {

using mod_p3dgrid::FileName;
using mod_p3dgrid::integer;
using mod_p3dgrid::logical;

/// Number of file sections, 0 to 30. Read by the restart operations.
extern integer nfilesect;

/// Section table: section k holds the variables `rstrtvarsct(k, 1)` to `rstrtvarsct(k, 2)`, both
/// included, counted from 1. Read by the restart operations.
extern mod_p3dgrid::fixed_array<integer, 30, 2> rstrtvarsct;

/// Number of variables of each section, 0 for unused sections. The sum of all 30 entries is the
/// number of rows of flow arrays. The restart operations also write entries 1 and 2.
extern mod_p3dgrid::fixed_array<integer, 30> numrstrtvar;

/// True: a restart read reads the whole body. False: it reads the header only, and the variables
/// are read one at a time.
extern logical readallvars;

/// Announces that a file is about to be read or written. Called first by the operation, before the
/// file is opened.
/// @param mode    1 for a read, 2 for a write.
/// @param iparm1  10 for grids; for restart files 20, 40 (layout 2) or 50 (layout 3).
/// @param iparm2  200 for grids and for restart layouts 2 and 3, 300 for the other layouts. Both
///                are 0 for an unknown restart layout.
/// @param filename  the file name that the operation was called with.
/// @param iarg    file-format code.
/// @param larg    precision flag: true if reals are double in the file.
/// @param opt7    number of the variable, if one variable is read.
/// @param opt8    blanking flag, for grids.
/// @param opt9    multi-block flag.
/// @param opt10,opt11  never present.
void dispreadwrite(const integer& mode, const integer& iparm1, const integer& iparm2,
                   const FileName& filename, const integer& iarg, const logical& larg,
                   const std::optional<integer>& opt7, const std::optional<logical>& opt8,
                   const std::optional<logical>& opt9, const std::optional<logical>& opt10,
                   const std::optional<logical>& opt11);

/// Receives the status of each allocation: `mod_p3dgrid::allocation_done` (0), `already_allocated`
/// or `out_of_memory`. It should return on 0 and end the run otherwise. If it returns all the same,
/// an existing array is used if it is large enough; anything else is a failed read.
void checkallocationerror(const integer& status);

/// Called once when a read fails; `mod_p3dgrid::p3dlastfailure()` returns file, place and reason.
/// It may return, end the run, or throw. The state afterwards is described at each operation.
void dispfilereaderror();

}  // namespace mod_gridvars

#pragma GCC visibility pop
