#pragma once

/// @file
/// What `mod_p3dgrid` requires of its host. The library declares these names and leaves them
/// undefined: a host defines every one of them, or links `mod_p3dgrid::gridvars_minimal`, which
/// does so for stand-alone programs.

#include <optional>

#include "mod_p3dgrid/arrays.hpp"
#include "mod_p3dgrid/file_name.hpp"
#include "mod_p3dgrid/logical.hpp"

#pragma GCC visibility push(default)

/// The host's part: every name in it is the host's to define.
namespace mod_gridvars {

using mod_p3dgrid::FileName;
using mod_p3dgrid::integer;
using mod_p3dgrid::logical;

/// Number of file sections, 0 to 30. Read by the restart operations.
extern integer nfilesect;

/// Section table: section k holds the variables `rstrtvarsct(k, 1)` to `rstrtvarsct(k, 2)`, both
/// included, counted from 1. Read by the restart operations.
extern mod_p3dgrid::fixed_array<integer, 30, 2> rstrtvarsct;

/// Number of variables of each section; entries beyond the sections in use are 0. The sum of all
/// 30 sizes the flow arrays. The restart operations also write entries 1 and 2.
extern mod_p3dgrid::fixed_array<integer, 30> numrstrtvar;

/// True: a restart read takes the whole body. False: it reads the header only, and the variables
/// are fetched one at a time.
extern logical readallvars;

/// Announces that a file is about to be read or written; the first action of the operation, before
/// the file is opened. Nothing is taken back from it.
/// @param mode    1 for a read, 2 for a write.
/// @param iparm1  10 for grids; for restart files 20, 40 (layout 2) or 50 (layout 3).
/// @param iparm2  200 for grids and for restart layouts 2 and 3, 300 for the other layouts.
///                Both are 0 for a restart layout that the library does not know.
/// @param filename  the file, as the operation's caller named it.
/// @param iarg    file-format code of the caller.
/// @param larg    precision flag of the caller: true when reals are double in the file.
/// @param opt7    number of the variable being read, where one variable is.
/// @param opt8    blanking flag, for grids.
/// @param opt9    multi-block flag.
/// @param opt10   never present.
/// @param opt11   never present.
void dispreadwrite(const integer& mode, const integer& iparm1, const integer& iparm2,
                   const FileName& filename, const integer& iarg, const logical& larg,
                   const std::optional<integer>& opt7, const std::optional<logical>& opt8,
                   const std::optional<logical>& opt9, const std::optional<logical>& opt10,
                   const std::optional<logical>& opt11);

/// Takes the status of the allocation just made: `mod_p3dgrid::allocation_done` (0),
/// `already_allocated` or `out_of_memory`. It must return without effect on 0 and end the run
/// otherwise, because the library goes on as if the allocation had succeeded. Where a host returns
/// all the same, the library never touches memory that it does not have: an array that exists
/// already is used as far as it is large enough, and anything else counts as a failed read.
void checkallocationerror(const integer& status);

/// Called once when a read meets the end of the file or an error; `mod_p3dgrid::p3dlastfailure()`
/// tells file, place and reason. It may return, end the run, or throw: the operation then leaves
/// behind what its description says for a failed read.
void dispfilereaderror();

}  // namespace mod_gridvars

#pragma GCC visibility pop
