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
/// - Text is read list-directed: blanks, tabs, commas and line ends separate, `r*c` repeats, and a
///   slash ends the record. A value left out (`,,` or `r*`) leaves what stands there: 0 in arrays
///   that the operation has allocated itself, 1 in `iblank`. Reals too large or too small for their
///   precision round to infinity and zero. A token that is not wholly a number, and an integer that
///   32 bits do not hold, make the read fail.
/// - Text is written in lines of at most 80 columns, each beginning with a blank, and reads back to
///   the same bits. A NaN other than the usual one stands as `NaN(...)` with its bits in
///   hexadecimal; in a Tecplot file any NaN stands as `NaN`.
/// - One thread only; the module's variables and units are shared by all operations.
///
/// ### Failures
/// - A read that meets the end of the file, a damaged record, text that is not a number, or an
///   invalid header (sizes far beyond what the file can hold; where points are read, a negative
///   extent or a block of more points than 32 bits count) calls
///   `mod_gridvars::dispfilereaderror` once and returns; the unit stays open. `p3dlastfailure` says
///   what and where. The arrays hold every whole value in front of that place.
/// - The status of every allocation of an array goes to `mod_gridvars::checkallocationerror`. Other
///   memory that runs out (buffers, lists, texts) is a fatal error, "... out of memory"; the
///   operation can be called again. `std::bad_alloc` leaves it only where the host has thrown that.
/// - A file that cannot be opened or written, or an invalid argument, is a fatal
///   error: see `p3dsetrunend`.
/// - An existing file is overwritten from its start and shortened when it is closed. One to which
///   no record is written keeps every byte. After a fatal error it holds the beginning of the
///   new data and nothing of the old. A process that is killed leaves new data at the front and old
///   data behind: a host that cannot afford that writes under another name and renames the file
///   once it is closed, as the command `p3dgrid` does.

#include "mod_gridvars.hpp"
#include "mod_p3dgrid/arrays.hpp"
#include "mod_p3dgrid/file_name.hpp"
#include "mod_p3dgrid/logical.hpp"
#include "mod_p3dgrid/run.hpp"
#include "mod_p3dgrid/version.hpp"

#pragma GCC visibility push(default)

/// The operations, the variables that they share, and the types of their arguments.
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

/// Name of the temporary file of variable n in entry n. (A host that says `using namespace
/// mod_p3dgrid` and includes `<cstdio>` must qualify it: C has a function of that name.)
extern fixed_array<FileName, 15> tmpfile;

/// @}

/// Copies `flag` into `debugprint`.
void p3dsetdebug(logical flag);

/// Reads a whole grid.
///
/// Warning: a record of an unformatted file may hold more than is requested; the rest is skipped.
/// A double-precision grid that is read with `dblprec` false is therefore accepted without an error
/// and gives coordinates of 1e19. `p3dsetwholerecords` makes that a failed read.
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
/// From double-precision records the coordinates pass through a staging array (3, points), which is
/// allocated after `xyz` and released. Only its beginning is ever touched, so that it takes address
/// space rather than memory.
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
/// @param filename,iformat,nblocks,ndim,multiblock  as above
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

// clang-format off
/// @name Restart files
/// A restart file holds the flow solution of a grid: a header, then the body. The restart layout
/// code `rsttype` says in which layout:
///
/// | code | header                                         | block extents      | body                                          |
/// |------|------------------------------------------------|--------------------|-----------------------------------------------|
/// | 0    | TALVEN: version, run data, flow parameters     | a record per block | sections                                      |
/// | 1    | step count, step size, block count             | a record per block | sections                                      |
/// | 100  | as for 1                                       | none               | triplets with variables 1 to 5, then sections 2 onward |
/// | 101  | extents, step count, step size of the one block| none kept          | as for 100; then flags and further variables  |
/// | 102  | none; one block                                | none               | sections                                      |
/// | 2    | PLOT3D solution file: block count              | one record         | four flow parameters, then sections           |
/// | 3    | PLOT3D function file: block count              | one record, with variable counts | sections                        |
// clang-format on
///
/// A section is a record of the variables that `mod_gridvars::rstrtvarsct` gives it, each at all
/// points of the block. `dblprec` applies to unformatted and binary files; text ignores it. Flow
/// arrays are (variable, point), the points of all blocks in one sequence; values have whatever
/// units the file's author gave them.
/// @{

/// Opens a restart file on unit 201, reads its header into the module variables and leaves the file
/// open behind it. Called by the operations that read restart files; a host needs it only to look
/// at a header, and closes unit 201 then.
/// @param filename    restart file
/// @param iformat     file-format code
/// @param dblprec     reals are 64-bit in the file
/// @param rsttype     restart layout code
/// @param nblocks     number of blocks; 1 for layouts that do not tell
/// @param multiblock  a block-count record stands first (layouts 2 and 3)
///
/// Sets `itimeint` (0 unless the header carries it) and the variables that the layout carries; the
/// others keep their values. `nfvar` is allocated for layout 3 unless it is allocated already; one
/// that is shorter than the block count makes the read fail. After a failed read the module
/// variables hold what was read so far. An unknown layout code means a file without header.
///
/// A TALVEN header of equation set 1 in a single-precision unformatted or binary file is not
/// supported: the run is halted with "Single precision TALVEN reads not working!".
void readrestartheader(const FileName& filename, integer iformat, logical dblprec, integer& nblocks,
                       integer rsttype, logical multiblock);

/// As above, and hands over the extents of the blocks.
/// @param filename,iformat,dblprec,nblocks,rsttype,multiblock  as above
/// @param idim,jdim,kdim  take over new storage, one entry per block, whatever they held; 0 where
///        the layout has no extents (100, 101 and 102). Left alone by a failed read.
void readrestartheader(const FileName& filename, integer iformat, logical dblprec, integer& nblocks,
                       integer rsttype, logical multiblock, allocatable<integer, 1>& idim,
                       allocatable<integer, 1>& jdim, allocatable<integer, 1>& kdim);

/// Creates a restart file on unit 301 and writes its header from `nstep`, `dtau`, `nfvar` and the
/// arguments. Leaves the unit open behind it, for a body to follow.
/// @param filename    restart file
/// @param iformat     file-format code
/// @param dblprec     write 64-bit reals
/// @param nblocks     number of blocks
/// @param rsttype     restart layout code
/// @param idim,jdim,kdim  extents, at least as many as the layout writes
/// @param multiblock  write the block-count record (layouts 2 and 3)
///
/// An `nfvar` that layout 3 needs and that is not allocated is allocated with zeros. The TALVEN
/// layout cannot be written: the run is halted with "TALVEN Writer not implimented!", and a file
/// that exists keeps every byte. So it does where the layout has no header and no body follows.
void writerestartheader(const FileName& filename, integer iformat, logical dblprec, integer nblocks,
                        array_view<const integer, 1> idim, array_view<const integer, 1> jdim,
                        array_view<const integer, 1> kdim, integer rsttype, logical multiblock);

/// Makes sure that a restart file belongs to a grid: reads both headers, compares the block counts
/// (with `multiblock`) and the extents of each block, reports every difference on standard output
/// and halts the run if there is one. Returns normally only if the two agree, both files closed.
/// @param gridfile,rstfile      grid and restart file
/// @param gridformat,rstformat  file-format codes
/// @param dblprec     precision of the restart file
/// @param rsttype     restart layout code
/// @param multiblock  both files begin with a block count (the restart file in layouts 2 and 3)
///
/// Extents that the restart layout does not hold count as 0. After a failed read nothing is
/// compared and unit 22 stays open; unit 201 is closed if the failure was the restart header's.
void checkp3drstrtheader(const FileName& gridfile, integer gridformat, const FileName& rstfile,
                         integer rstformat, logical dblprec, integer rsttype, logical multiblock);

/// Reads a whole restart file.
/// @param filename     restart file
/// @param iformat      file-format code
/// @param dblprec      reals are 64-bit in the file; they are rounded to nearest
/// @param nblocks      number of blocks that the caller has extents for; a header with more is a
///                     failed read
/// @param blockpoints  points of each block, used only when `readallvars` is false
/// @param varvalues    flow variables (variable, point); must be unallocated. As many rows as
///                     `numrstrtvar` sums up to, 8, 10 or 13 after the extensions of layout 101.
///                     Rows that no record of the file fills are left unset; those that a chain
///                     of extensions skips while it adds rows hold 0.
/// @param auxvalues    triplets (3, point) of layouts 100 and 101; must be unallocated
/// @param idim,jdim,kdim  extents of each block, normally those of the grid
/// @param rsttype      restart layout code; any other than those above is a fatal error
/// @param multiblock   a block-count record stands first (layouts 2 and 3)
///
/// With `mod_gridvars::readallvars` false only the header is read, and `varvalues` is allocated for
/// one variable at the sum of `blockpoints` and left unset.
///
/// Module variables set: those of the header; `numrstrtvar(1)` (5 for layouts 2, 100 and 101, the
/// largest `nfvar` for 3); for layout 2 `sqvar` in single-precision records, else `dqvar`, one row
/// per block, and from records `p3dxm1`, `p3dalfa`, `p3dre`, `p3dtau` as of the last block (text
/// leaves these four alone); `iflag` and `numrstrtvar(2)` for the extensions of layout 101.
///
/// Works on unit 201 and closes it. A failed read leaves it open and keeps what is allocated, the
/// staging arrays of double-precision files among it: the next such read then hands
/// `already_allocated` to `checkallocationerror`.
///
/// Kept as they are:
/// - layout 100 in single-precision records is read as ordinary sections and leaves `auxvalues`
///   unset; in double precision the triplets are read but never reach `auxvalues`, and their
///   staging array stays allocated;
/// - layout 101 in double precision allocates `auxvalues` twice: a host sees `already_allocated`,
///   and if it returns the triplets arrive;
/// - text with `itimeint` 2 or more cannot be read: its older time levels are asked for as records.
void readp3drestart(const FileName& filename, integer iformat, logical dblprec, integer nblocks,
                    array_view<const integer, 1> blockpoints, allocatable<float, 2>& varvalues,
                    allocatable<float, 2>& auxvalues, array_view<const integer, 1> idim,
                    array_view<const integer, 1> jdim, array_view<const integer, 1> kdim,
                    integer rsttype, logical multiblock);

/// Writes a whole restart file. Leaves unit 301 open, and with it the file unfinished: close the
/// unit with `p3dcloseunit(301)`, or let the run end. Unit 201 is closed.
/// @param filename    restart file
/// @param iformat     file-format code
/// @param dblprec     write 64-bit reals, widened exactly
/// @param nparamrows  rows of `sqvar` or `dqvar` in use (layout 2): block n is written with row
///                    min(n, nparamrows). If the array that the file needs is not allocated it is
///                    created from the other one.
/// @param nblocks     number of blocks
/// @param varvalues   flow variables (variable, point)
/// @param auxvalues   triplets (3, point), layouts 100 and 101
/// @param idim,jdim,kdim  extents of each block
/// @param rsttype     restart layout code; layout 0 halts the run as `writerestartheader` does
/// @param multiblock  write the block-count record (layouts 2 and 3)
///
/// Prints a line per block. Sets `numrstrtvar(1)` to 5 for layout 101 and to `nfvar` of the last
/// block for layout 3. Older time levels are never written. Layout 101 ends with the flags of
/// `iflag` and the variables they announce. Arrays without the rows, points or flags that are to be
/// written are fatal errors; the file is not touched then.
void writep3drestart(const FileName& filename, integer iformat, logical dblprec, integer nparamrows,
                     integer nblocks, array_view<const float, 2> varvalues,
                     array_view<const float, 2> auxvalues, array_view<const integer, 1> idim,
                     array_view<const integer, 1> jdim, array_view<const integer, 1> kdim,
                     integer rsttype, logical multiblock);

/// @}

/// @name One variable at a time
/// For solutions that memory does not hold whole: `readnextp3dvar` reads one variable per call,
/// `writenextp3dvar` writes each into a temporary file, and `combinep3dvarfiles` makes a restart
/// file of the temporary files. At most 15 variables in one run.
/// @{

/// Reads one variable of a restart file, for all points of all blocks. Every call reads the file
/// from its start; besides the result it holds one variable and a fixed buffer.
/// @param ivar         number of the variable, 1 to the sum of `numrstrtvar`
/// @param filename     restart file
/// @param iformat      file-format code
/// @param dblprec      reals are 64-bit in the file; they are rounded to nearest
/// @param nblocks      number of blocks
/// @param blockpoints  points of each block; their sum is what is read
/// @param varvalues    row 1 receives the variable, block after block; other rows stay as they are.
///                     A variable that no record holds comes back as zeros
/// @param idim,jdim,kdim  extents of each block
/// @param rsttype      restart layout code; any other than a layout's is a fatal error
/// @param multiblock   a block-count record stands first (layouts 2 and 3)
///
/// For layout 2 the flow parameters go into row b of `dqvar` (text and double precision) or
/// `sqvar`; one that is not allocated is allocated with a row per block, one that is too small is
/// a fatal error. For layout 101 and a variable above 5 the flags behind the blocks go into
/// `iflag`; extension variables must be counted in `numrstrtvar` by then. Text passes through
/// double precision, so that a number of more digits than single precision tells apart may round to
/// the neighbour of what `readp3drestart` reads. It has no older time levels, whatever `itimeint`
/// is.
///
/// Works on unit 201 and closes it. A failed read leaves it open, `varvalues` as it was and the
/// staging arrays allocated, which the next call reports through `checkallocationerror`. A variable
/// that does not exist and arrays too small are fatal errors.
void readnextp3dvar(integer ivar, const FileName& filename, integer iformat, logical dblprec,
                    integer nblocks, array_view<const integer, 1> blockpoints,
                    array_view<float, 2> varvalues, array_view<const integer, 1> idim,
                    array_view<const integer, 1> jdim, array_view<const integer, 1> kdim,
                    integer rsttype, logical multiblock);

/// Writes one variable into a temporary file: an unformatted record per block, nothing else.
/// @param ivar         number of the variable, 1 to 15; any other is a fatal error
/// @param prefix       stem of the file name: *flow* and variable 3 give *flow000003.tmp*. While a
///                     file of that name exists, a "t" is put behind it; names are cut at 40
///                     characters, and one that cannot grow any further is a fatal error
/// @param dblprec      write 64-bit values, widened
/// @param nblocks      number of blocks
/// @param blockpoints  points of each block; only their sum counts, and only with `dblprec`
/// @param varvalues    row 1 holds the variable, block after block
/// @param idim,jdim,kdim  extents of each block
///
/// The name stands in `tmpfile(ivar)` from the first message on, and is kept there. An entry whose
/// file could not be created is blank. The file is complete and closed on return.
void writenextp3dvar(integer ivar, const FileName& prefix, logical dblprec, integer nblocks,
                     array_view<const integer, 1> blockpoints, array_view<const float, 2> varvalues,
                     array_view<const integer, 1> idim, array_view<const integer, 1> jdim,
                     array_view<const integer, 1> kdim);

/// Makes a restart file of the temporary files `tmpfile(1)` to `tmpfile(n)`, n being the sum of
/// `numrstrtvar`, and deletes them. Holds one block of all variables.
/// @param leadvalues  triplets (3, point) of layouts 100 and 101
/// @param filename    restart file to write
/// @param iformat     file-format code
/// @param dblprec     precision of the temporary files and of the output; for text output the
///                    temporary files must be in double precision
/// @param nparamrows  rows of `sqvar` or `dqvar` in use (layout 2), as for `writep3drestart`
/// @param nblocks     number of blocks
/// @param idim,jdim,kdim  extents of each block, as they were when the variables were written
/// @param rsttype     restart layout code
/// @param multiblock  write the block-count record (layouts 2 and 3)
///
/// Uses units 301 and 302 upward and closes them. The temporary files are deleted on success, for
/// an unknown `iformat`, and after a failed read of one of them, before the host is told; unit 301
/// then stays open and the file as far as it was written. A temporary file whose records are longer
/// or shorter than the blocks, or that goes on behind the last, is a failed read. A missing one is
/// a fatal error and leaves the others. Invalid arguments are fatal errors
/// before anything is opened. Sections that name variables above `numrstrtvar(1)` are written too.
void combinep3dvarfiles(array_view<const float, 2> leadvalues, const FileName& filename,
                        integer iformat, logical dblprec, integer nparamrows, integer nblocks,
                        array_view<const integer, 1> idim, array_view<const integer, 1> jdim,
                        array_view<const integer, 1> kdim, integer rsttype, logical multiblock);

/// @}

/// Writes grid and flow solution as a Tecplot ASCII data file: a VARIABLES line, then for each
/// block a zone with a line per point, i fastest.
/// @param filename   file to write; an existing one is replaced
/// @param nblocks    number of blocks
/// @param xyz        coordinates (3, point)
/// @param qvar       flow values (5, point), written as they stand under the names U, V, W, P, RHO.
///                   Arrays with other than three and five rows make lines that do not match the
///                   VARIABLES line
/// @param idim,jdim,kdim  extents of each block; above 9999 they stand as asterisks in the zone
/// line
/// @param iblank     blanking value of each point
/// @param useiblank  write the IBLANK column
///
/// Reals stand in the shortest form that reads back to the same bits, and any NaN as `NaN`, since
/// Tecplot readers know no other. Leaves unit 594 open: the file is complete when the host closes
/// it (`p3dcloseunit(594)`), at the next call, or when the run ends. Arrays with fewer points than
/// the extents ask for are fatal errors; the file is not touched then.
void writetecplotfile_p3d(const FileName& filename, integer nblocks,
                          array_view<const double, 2> xyz, array_view<const double, 2> qvar,
                          array_view<const integer, 1> idim, array_view<const integer, 1> jdim,
                          array_view<const integer, 1> kdim, array_view<const integer, 1> iblank,
                          logical useiblank);

}  // namespace mod_p3dgrid

#pragma GCC visibility pop
