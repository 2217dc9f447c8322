#pragma once

/// @file
/// `mod_p3dgrid`: reads and writes multi-block structured grids in the PLOT3D layout. This is the
/// one header that a host includes.
///
/// ### Conventions
/// - Integers are 32 bits, coordinates travel as `float`, extents are counted from 1.
/// - File-format code `iformat`: 0 unformatted (records framed by 4-byte length markers), 1
///   formatted (list-directed text), 2 binary (the bytes of 0 without markers). With any other
///   code an operation opens, reads and writes nothing, and says nothing.
/// - `dblprec`: reals of an unformatted or binary file are 64-bit. Text ignores it.
/// - `multiblock`: the file begins with a block-count record. Without it the file holds one block.
/// - The points of all blocks form one sequence, block 1 first; within a block i runs fastest, then
///   j, then k. Coordinate arrays are (3, points).
/// - Byte order is the machine's.
/// - One thread only; the module's variables and units are shared by all operations.
///
/// ### Failures
/// - A read that meets the end of the file, a damaged record, text that is not a number, or a
///   header that cannot be true (a negative extent, points that 32 bits cannot count, sizes far
///   beyond what the file can hold) calls `mod_gridvars::dispfilereaderror` once and returns; the
///   unit stays open. `p3dlastfailure` says what and where.
/// - The status of every allocation goes to `mod_gridvars::checkallocationerror`.
/// - A file that cannot be opened or written, or an argument that cannot be meant, is an error of
///   the run: see `p3dsetrunend`.

#include "mod_gridvars.hpp"
#include "mod_p3dgrid/arrays.hpp"
#include "mod_p3dgrid/file_name.hpp"
#include "mod_p3dgrid/logical.hpp"
#include "mod_p3dgrid/run.hpp"

namespace mod_p3dgrid {

/// @name Module variables
/// Shared by the operations; a host reads and writes them directly. They start zero or unallocated
/// unless stated otherwise.
/// @{

/// Progress messages on standard output; starts true. Set it with `p3dsetdebug`.
extern logical debugprint;

/// Flags of the variable extension records of restart layout 101.
extern fixed_array<integer, 3> iflag;

extern integer eqid;         ///< equation-set identifier of a TALVEN restart header
extern integer fileversion;  ///< version number of a TALVEN restart header
extern integer nstep;        ///< time-step counter, carried from the header read to the one written
extern double dtau;          ///< time-step size, carried likewise
extern integer itimeint;     ///< time-integration scheme; 0 for headers that do not carry it
extern integer isgsmodel;    ///< sub-grid-scale model switch of a TALVEN header
extern integer ibeta;        ///< switch of a TALVEN header
extern integer talnvar;      ///< number of flow variables named in a TALVEN header

extern double talalfa;  ///< angle of attack of a TALVEN header
extern double talbeta;  ///< side-slip angle of a TALVEN header
extern double talgam;   ///< ratio of specific heats of a TALVEN header
extern double talpr;    ///< Prandtl number of a TALVEN header
extern double talprt;   ///< turbulent Prandtl number of a TALVEN header
extern double talre;    ///< Reynolds number of a TALVEN header
extern double tals1;    ///< a further scalar of a TALVEN header, stored only
extern double talxm1;   ///< free-stream Mach number of a TALVEN header

extern double p3dxm1;   ///< free-stream Mach number of the PLOT3D solution block read last
extern double p3dalfa;  ///< angle of attack of that block
extern double p3dre;    ///< Reynolds number of that block
extern double p3dtau;   ///< time of that block

/// Number of flow variables per point of each block, for restart layout 3.
extern allocatable<integer, 1> nfvar;

/// Header values (block, 4) of PLOT3D solution files in single precision: free-stream Mach number,
/// angle of attack, Reynolds number, time.
extern allocatable<float, 2> sqvar;
/// The same in double precision; always used for text.
extern allocatable<double, 2> dqvar;

/// Name of the temporary file of variable n in entry n.
extern fixed_array<FileName, 15> tmpfile;

/// @}

/// Copies `flag` into `debugprint`.
void p3dsetdebug(logical flag);

/// Reads a whole grid.
///
/// All output arrays must be unallocated; they belong to the caller afterwards.
/// @param filename    grid file
/// @param iformat     file-format code
/// @param dblprec     coordinates are 64-bit in the file; they are rounded to nearest
/// @param nblocks     number of blocks
/// @param ndim        always set to 3
/// @param xyz         coordinates (3, points), in the file's unit of length
/// @param idim,jdim,kdim  extents of each block
/// @param iblank      blanking value of each point; allocated only with `useiblank`
/// @param useiblank   each block's record ends with its blanking values
/// @param multiblock  the file begins with a block-count record
///
/// Works on unit 13 and closes it. After a failed read unit 13 stays open and the arguments hold
/// what was set, allocated and read until then: `nblocks` once the block count is known, `xyz`
/// filled as far as the file went, `iblank` 1 for the points not reached. A header that cannot be
/// true fails before the arrays that it would size are allocated.
///
/// Prints the block count always, and with `debugprint` two lines per block.
/// With an unknown `iformat` there is one block with extents of 0.
void readp3dgrid(const FileName& filename, integer iformat, logical dblprec, integer& nblocks,
                 integer& ndim, allocatable<float, 2>& xyz, allocatable<integer, 1>& idim,
                 allocatable<integer, 1>& jdim, allocatable<integer, 1>& kdim,
                 allocatable<integer, 1>& iblank, logical useiblank, logical multiblock);

/// Reads the block count of a grid file.
/// @param filename    grid file
/// @param iformat     file-format code
/// @param nblocks     number of blocks; untouched when its read fails
/// @param ndim        always set to 3
/// @param multiblock  the file begins with a block-count record
///
/// Works on unit 22 and closes it; a failed read leaves it open. Prints nothing.
void readp3dgridheader(const FileName& filename, integer iformat, integer& nblocks, integer& ndim,
                       logical multiblock);

/// As above, and reads the dimension record too.
/// @param npoints  number of points of all blocks, summed in 32 bits: more points wrap around.
///                 Untouched when a read fails.
void readp3dgridheader(const FileName& filename, integer iformat, integer& nblocks, integer& ndim,
                       logical multiblock, integer& npoints);

/// Writes a grid in the form that `readp3dgrid` with the same flags reads back. An existing file is
/// replaced.
/// @param filename    grid file
/// @param iformat     file-format code
/// @param dblprec     write 64-bit coordinates, widened exactly
/// @param nblocks     number of blocks
/// @param ndim        number of rows of `xyz` that count: 3
/// @param xyz         coordinates (ndim, points)
/// @param idim,jdim,kdim  extents of each block, at least `nblocks` entries
/// @param iblank      blanking value of each point, used only with `useiblank`
/// @param useiblank   write the blanking values
/// @param multiblock  write the block-count record; without it the file reads as its first block
///
/// Works on unit 13 and closes it. Prints a line per block, whatever `debugprint` says. Text holds
/// every coordinate in the shortest form that reads back to the same bits. Arrays smaller than the
/// extents ask for, extents below 0 and blocks of more points than 32 bits count are errors of the
/// run; the file is not touched then.
void writep3dgrid(const FileName& filename, integer iformat, logical dblprec, integer nblocks,
                  integer ndim, array_view<const float, 2> xyz, array_view<const integer, 1> idim,
                  array_view<const integer, 1> jdim, array_view<const integer, 1> kdim,
                  array_view<const integer, 1> iblank, logical useiblank, logical multiblock);

}  // namespace mod_p3dgrid
