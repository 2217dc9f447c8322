#pragma once

#include "MOD_P3DReader.hpp"
#include "restart/body.hpp"

/// The flow parameters of PLOT3D solution files, one row per block in `sqvar` or `dqvar`, whichever
/// the path uses.
namespace mod_p3dgrid {

/// Refuses a parameter array without the rows that are to be written (block n takes row
/// min(n, nparamrows)), and two that are missing.
void check_parameters_to_write(const FileName& filename, const Coding& coding, integer nblocks,
                               integer nparamrows);

/// Creates the array that the path writes from out of the other one, if it is missing.
void create_parameters_to_write(const FileName& filename, const Coding& coding, integer nblocks,
                                integer nparamrows);

/// Makes the array that the path reads into hold a row per block: one that is missing is allocated
/// with the other one's values, or zeros; one that is too small is a fatal error.
void create_parameters_to_read(const FileName& filename, const Coding& coding, integer nblocks);

}  // namespace mod_p3dgrid
