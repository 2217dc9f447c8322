#pragma once

/// @file
/// `mod_p3dgrid`: reads and writes multi-block structured grids in the PLOT3D layout. This is the
/// one header that a host includes.
///
/// ### Conventions
/// - Integers are 32 bits, coordinates travel as `float`, extents are counted from 1.
/// - File-format code `iformat`: 0 unformatted (records framed by 4-byte length markers), 1
///   formatted (list-directed text), 2 binary (the bytes of 0 without markers). With any other code
///   an operation opens, reads and writes nothing, and says nothing.
/// - `dblprec`: reals of an unformatted or binary file are 64-bit, rounded to nearest when read and
///   widened exactly when written. Text ignores it.
/// - `multiblock`: the file begins with a block-count record. Without it the file holds one block.
///   Of restart files only layouts 2 and 3 have this record.
/// - `idim`, `jdim`, `kdim`: the extents of each block; arguments that are read have at least
///   `nblocks` entries.
/// - The points of all blocks form one sequence, block 1 first; within a block i runs fastest, then
///   j, then k. Coordinate arrays are (3, points).
/// - The operations that move coordinates or flow have a second form with arrays of `double`: same
///   calls, messages and failures. An operation passes values through a staging array, and reports
///   its allocation, if file and memory differ in precision; `readnextp3dvar` always does. Text is
///   read and written with all digits of the kind in memory.
/// - The byte order is that of the machine, and files have three dimensions, unless `p3dsetcoding`
///   says otherwise.
/// - Text is read list-directed: blanks, tabs, commas and line ends are separators, `r*c` repeats,
///   and a slash ends the record. A null value (`,,` or `r*`) leaves its variable unchanged: 0 in
///   arrays that the operation allocates, 1 in `iblank`. Reals out of range become infinity or
///   zero. A token that is not a number, and an integer beyond 32 bits, make the read fail.
/// - Text is written in lines of at most 80 columns, each beginning with a blank, and reads back to
///   the same bits. A NaN other than the usual one is written as `NaN(...)` with its bits in
///   hexadecimal; in a Tecplot file any NaN is `NaN`.
/// - The library is single-threaded; all operations share the module variables and units.
///
/// ### Failures
/// - A read that meets the end of the file, a damaged record, text that is not a number, or an
///   invalid header (sizes far beyond what the file can hold; if points are read, a negative extent
///   or a block of more points than 32 bits count) calls `mod_gridvars::dispfilereaderror` once and
///   returns; the unit stays open. `p3dlastfailure` returns place and reason. The arrays hold every
///   complete value before that place.
/// - The status of every allocation of an array goes to `mod_gridvars::checkallocationerror`. Lack
///   of memory for buffers, lists and texts is a fatal error, "... out of memory"; the operation
///   can be called again. `std::bad_alloc` leaves an operation only if the host has thrown it.
/// - A file that cannot be opened or written, and an invalid argument, are fatal errors: see
///   `p3dsetrunend`.
/// - An existing file is overwritten from its start and truncated when it is closed. Without a
///   record written it keeps every byte. After a fatal error it holds the beginning of the new data
///   and nothing of the old. If the process is killed, old data follow the new: to prevent that,
///   write under another name and rename the closed file, as the command `p3dgrid` does.

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
extern integer nstep;        ///< time-step counter of the header read last, and of headers written
extern double dtau;          ///< time-step size, likewise
extern integer itimeint;     ///< time-integration scheme; 0 for headers without it
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

/// Number of flow variables per point of each block, restart layout 3.
extern allocatable<integer, 1> nfvar;

/// Header values (block, 4) of PLOT3D solution files in single precision: free-stream Mach number,
/// angle of attack, Reynolds number, time.
extern allocatable<float, 2> sqvar;
/// The same in double precision; always used for text.
extern allocatable<double, 2> dqvar;

/// Name of the temporary file of variable n in entry n. Since C has a function of that name, hosts
/// with `using namespace mod_p3dgrid` and `<cstdio>` must qualify it.
extern fixed_array<FileName, 15> tmpfile;

/// @}

/// Copies `flag` into `debugprint`.
void p3dsetdebug(logical flag);

/// Reads a whole grid.
///
/// Warning: the rest of an unformatted record that holds more than requested is skipped. A
/// double-precision grid that is read with `dblprec` false is therefore accepted and gives
/// coordinates of 1e19. `p3dsetwholerecords` makes that a failed read.
///
/// All output arrays must be unallocated; they belong to the caller afterwards.
/// @param filename,iformat,dblprec,multiblock  see the conventions above
/// @param nblocks         number of blocks
/// @param ndim            always set to 3
/// @param xyz             coordinates (3, points), in the unit of length of the file
/// @param idim,jdim,kdim  extents, one entry per block
/// @param iblank          blanking value of each point; allocated only with `useiblank`
/// @param useiblank       the record of each block ends with its blanking values
///
/// Uses unit 13 and closes it. After a failed read unit 13 stays open and the arguments hold what
/// was set, allocated and read until then: `nblocks` once the block count is known, the coordinates
/// before the failure, 1 in `iblank` for the points not reached. With an invalid header nothing
/// that depends on its sizes is allocated.
///
/// Double-precision coordinates are converted in a staging array (3, points), which is allocated
/// after `xyz` and released. Only its beginning is used, so it costs address space, not memory.
///
/// Prints the block count always, and with `debugprint` two lines per block. With an unknown
/// `iformat` there is one block with extents of 0.
void readp3dgrid(const FileName& filename, integer iformat, logical dblprec, integer& nblocks,
                 integer& ndim, allocatable<float, 2>& xyz, allocatable<integer, 1>& idim,
                 allocatable<integer, 1>& jdim, allocatable<integer, 1>& kdim,
                 allocatable<integer, 1>& iblank, logical useiblank, logical multiblock);

/// The same with coordinates in double precision.
void readp3dgrid(const FileName& filename, integer iformat, logical dblprec, integer& nblocks,
                 integer& ndim, allocatable<double, 2>& xyz, allocatable<integer, 1>& idim,
                 allocatable<integer, 1>& jdim, allocatable<integer, 1>& kdim,
                 allocatable<integer, 1>& iblank, logical useiblank, logical multiblock);

/// Reads the block count of a grid file.
/// @param filename,iformat,multiblock  see the conventions above
/// @param nblocks  number of blocks; unchanged by a failed read
/// @param ndim     always set to 3
///
/// Uses unit 22 and closes it; a failed read leaves it open. Prints nothing.
void readp3dgridheader(const FileName& filename, integer iformat, integer& nblocks, integer& ndim,
                       logical multiblock);

/// As above, and reads the dimension record too.
/// @param filename,iformat,nblocks,ndim,multiblock  as above
/// @param npoints  number of points of all blocks, summed in 32 bits with wrap-around; unchanged by
///                 a failed read
void readp3dgridheader(const FileName& filename, integer iformat, integer& nblocks, integer& ndim,
                       logical multiblock, integer& npoints);

/// Writes a grid that `readp3dgrid` reads with the same flags. An existing file is replaced.
/// @param filename,iformat,dblprec,nblocks,idim,jdim,kdim  see the conventions above
/// @param ndim        3
/// @param xyz         coordinates (ndim, points)
/// @param iblank      blanking value of each point, used only with `useiblank`
/// @param useiblank   write the blanking values
/// @param multiblock  write the block-count record; without it the file reads as its first block
///
/// Uses unit 13 and closes it. Prints a line per block, whatever `debugprint` is. Text holds each
/// coordinate in the shortest form that reads back to the same bits. Arrays smaller than the
/// extents require, negative extents and blocks of more points than 32 bits count are fatal errors;
/// the file is not touched then.
void writep3dgrid(const FileName& filename, integer iformat, logical dblprec, integer nblocks,
                  integer ndim, array_view<const float, 2> xyz, integer_view idim,
                  integer_view jdim, integer_view kdim, integer_view iblank, logical useiblank,
                  logical multiblock);

/// The same with coordinates in double precision.
void writep3dgrid(const FileName& filename, integer iformat, logical dblprec, integer nblocks,
                  integer ndim, array_argument<const double, 2> xyz, integer_view idim,
                  integer_view jdim, integer_view kdim, integer_view iblank, logical useiblank,
                  logical multiblock);

// clang-format off
/// @name Restart files
/// A restart file holds the flow solution of a grid: a header, then the body. Its layout is given by
/// the restart layout code `rsttype`:
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
/// A section is a record of the variables that `mod_gridvars::rstrtvarsct` assigns to it, each at
/// all points of the block. Flow arrays are (variable, point), the points of all blocks in one
/// sequence, in the units of the file.
/// @{

/// Opens a restart file on unit 201 and reads its header into the module variables. The unit stays
/// open; the host closes it. The operations that read restart files do this themselves.
/// @param filename,iformat,dblprec,rsttype,multiblock  see the conventions above
/// @param nblocks  number of blocks; 1 for layouts whose header does not hold it
///
/// Sets `itimeint` (0 unless the header holds it) and the variables in the header of the layout;
/// the others keep their values. `nfvar` is allocated for layout 3 unless it is allocated already;
/// one with fewer entries than blocks makes the read fail. After a failed read the module variables
/// hold what was read so far. An unknown layout code means a file without header.
///
/// A TALVEN header of equation set 1 in a single-precision unformatted or binary file is not
/// supported: the run is halted with "Single precision TALVEN reads not working!".
void readrestartheader(const FileName& filename, integer iformat, logical dblprec, integer& nblocks,
                       integer rsttype, logical multiblock);

/// As above, and returns the extents of the blocks.
/// @param filename,iformat,dblprec,nblocks,rsttype,multiblock  as above
/// @param idim,jdim,kdim  replaced by new arrays with an entry per block: 0 for the layouts without
///                        extents (100, 101 and 102). Unchanged by a failed read
void readrestartheader(const FileName& filename, integer iformat, logical dblprec, integer& nblocks,
                       integer rsttype, logical multiblock, allocatable<integer, 1>& idim,
                       allocatable<integer, 1>& jdim, allocatable<integer, 1>& kdim);

/// Creates a restart file on unit 301 and writes its header from `nstep`, `dtau`, `nfvar` and the
/// arguments. The unit stays open for the body.
/// @param filename,iformat,dblprec,nblocks,rsttype,multiblock  see the conventions above
/// @param idim,jdim,kdim  extents, at least as many as the layout writes
///
/// If layout 3 needs `nfvar` and it is not allocated, it is allocated with zeros. The TALVEN layout
/// cannot be written: the run is halted with "TALVEN Writer not implimented!". An existing file
/// then keeps every byte, and also if the layout has no header and no body follows.
void writerestartheader(const FileName& filename, integer iformat, logical dblprec, integer nblocks,
                        integer_view idim, integer_view jdim, integer_view kdim, integer rsttype,
                        logical multiblock);

/// Checks that a restart file belongs to a grid: reads both headers, compares the block counts
/// (with `multiblock`) and the extents of each block, prints every difference and halts the run if
/// there is one. Returns only if the two agree, after closing both files, or after a failed read.
/// @param gridfile,rstfile      grid and restart file
/// @param gridformat,rstformat  file-format codes
/// @param dblprec,rsttype       precision and restart layout code of the restart file
/// @param multiblock            both files begin with a block count
///
/// Extents that the restart layout does not hold count as 0. After a failed read nothing is
/// compared and unit 22 stays open; unit 201 is closed if the restart header could not be read.
void checkp3drstrtheader(const FileName& gridfile, integer gridformat, const FileName& rstfile,
                         integer rstformat, logical dblprec, integer rsttype, logical multiblock);

/// Reads a whole restart file.
/// @param filename,iformat,dblprec,idim,jdim,kdim,multiblock  see the conventions above
/// @param nblocks      number of blocks that the caller has extents for; a header with more is a
///                     failed read
/// @param blockpoints  points of each block, used only if `readallvars` is false
/// @param varvalues    flow variables (variable, point); must be unallocated. It has as many rows
///                     as the sum of `numrstrtvar`, or 8, 10 or 13 after extensions of layout 101.
///                     Rows that no record fills are uninitialised; those that a chain of
///                     extensions skips while it adds rows are 0
/// @param auxvalues    triplets (3, point) of layouts 100 and 101; must be unallocated
/// @param rsttype      restart layout code; an unknown one is a fatal error
///
/// With `mod_gridvars::readallvars` false only the header is read, and `varvalues` is allocated for
/// one variable at the sum of `blockpoints` and is uninitialised.
///
/// Sets the module variables of the header; `numrstrtvar(1)` (5 for layouts 2, 100 and 101, the
/// largest `nfvar` for 3); for layout 2 `sqvar` from single-precision records, else `dqvar`, one
/// row per block, and `p3dxm1`, `p3dalfa`, `p3dre`, `p3dtau` of the last block, except from text;
/// `iflag` and `numrstrtvar(2)` for the extensions of layout 101.
///
/// Uses unit 201 and closes it. A failed read leaves it open and keeps all allocated arrays. These
/// include staging arrays of double-precision files, for which the next such read passes
/// `already_allocated` to `checkallocationerror`.
///
/// Known quirks, preserved for compatibility:
/// - Layout 100 in single-precision records is read as ordinary sections, and `auxvalues` is
///   uninitialised. In double precision the triplets are read but do not reach `auxvalues`, and
///   their staging array stays allocated.
/// - Layout 101 in double precision allocates `auxvalues` twice and reports `already_allocated`. If
///   the host returns, the triplets arrive.
/// - Text with `itimeint` of 2 or more cannot be read: its older time levels are read as records.
void readp3drestart(const FileName& filename, integer iformat, logical dblprec, integer nblocks,
                    integer_view blockpoints, allocatable<float, 2>& varvalues,
                    allocatable<float, 2>& auxvalues, integer_view idim, integer_view jdim,
                    integer_view kdim, integer rsttype, logical multiblock);

/// The same with flow in double precision. The quirks of double-precision files above are those of
/// single-precision files here, because these pass through staging arrays. Triplets of layout 100
/// in double precision are read correctly.
void readp3drestart(const FileName& filename, integer iformat, logical dblprec, integer nblocks,
                    integer_view blockpoints, allocatable<double, 2>& varvalues,
                    allocatable<double, 2>& auxvalues, integer_view idim, integer_view jdim,
                    integer_view kdim, integer rsttype, logical multiblock);

/// Writes a whole restart file. Unit 301 stays open and the file is incomplete until the host calls
/// `p3dcloseunit(301)` or the run ends. Unit 201 is closed.
/// @param filename,iformat,dblprec,nblocks,idim,jdim,kdim,multiblock  see the conventions above
/// @param nparamrows  rows of `sqvar` or `dqvar` in use (layout 2): block n is written with row
///                    min(n, nparamrows). If the array that the file needs is not allocated, it is
///                    created from the other one
/// @param varvalues   flow variables (variable, point)
/// @param auxvalues   triplets (3, point), layouts 100 and 101
/// @param rsttype     restart layout code; layout 0 halts the run as in `writerestartheader`
///
/// Prints a line per block. Sets `numrstrtvar(1)` to 5 for layout 101 and to `nfvar` of the last
/// block for layout 3. Older time levels are never written. Layout 101 ends with the flags of
/// `iflag` and the variables they announce. Arrays without the required rows, points or flags are
/// fatal errors; the file is not touched then.
void writep3drestart(const FileName& filename, integer iformat, logical dblprec, integer nparamrows,
                     integer nblocks, array_view<const float, 2> varvalues,
                     array_view<const float, 2> auxvalues, integer_view idim, integer_view jdim,
                     integer_view kdim, integer rsttype, logical multiblock);

/// The same with flow in double precision.
void writep3drestart(const FileName& filename, integer iformat, logical dblprec, integer nparamrows,
                     integer nblocks, array_argument<const double, 2> varvalues,
                     array_view<const double, 2> auxvalues, integer_view idim, integer_view jdim,
                     integer_view kdim, integer rsttype, logical multiblock);

/// @}

/// @name One variable at a time
/// For solutions that do not fit memory: `readnextp3dvar` reads one variable per call,
/// `writenextp3dvar` writes each to a temporary file, and `combinep3dvarfiles` combines these to a
/// restart file. At most 15 variables in one run.
/// @{

/// Reads one variable of a restart file at all points of all blocks. Each call reads the file from
/// its start. Memory: one variable besides the result, and a fixed buffer.
/// @param filename,iformat,dblprec,nblocks,idim,jdim,kdim,multiblock  see the conventions above
/// @param ivar         number of the variable, 1 to the sum of `numrstrtvar`
/// @param blockpoints  points of each block; their sum is the number of values returned
/// @param varvalues    row 1 receives the variable, block after block; other rows are unchanged. A
///                     variable that no record holds is returned as zeros
/// @param rsttype      restart layout code; an unknown one is a fatal error
///
/// For layout 2 the flow parameters of block b go to row b of `dqvar` (text and double precision)
/// or `sqvar`. A missing array is allocated with a row per block; one that is too small is a fatal
/// error. For layout 101 and a variable above 5 the flags after the blocks go to `iflag`; extension
/// variables must be counted in `numrstrtvar`. Text is converted by way of double precision, so a
/// number with many digits may round to the neighbour of what `readp3drestart` returns. Text has no
/// older time levels, whatever `itimeint` is.
///
/// Uses unit 201 and closes it. A failed read leaves it open, `varvalues` unchanged and the staging
/// arrays allocated, which the next call reports to `checkallocationerror`. Invalid variable
/// numbers and arrays that are too small are fatal errors.
void readnextp3dvar(integer ivar, const FileName& filename, integer iformat, logical dblprec,
                    integer nblocks, integer_view blockpoints, array_view<float, 2> varvalues,
                    integer_view idim, integer_view jdim, integer_view kdim, integer rsttype,
                    logical multiblock);

/// The same with flow in double precision.
void readnextp3dvar(integer ivar, const FileName& filename, integer iformat, logical dblprec,
                    integer nblocks, integer_view blockpoints, array_argument<double, 2> varvalues,
                    integer_view idim, integer_view jdim, integer_view kdim, integer rsttype,
                    logical multiblock);

/// Writes one variable to a temporary file: an unformatted record per block.
/// @param ivar         number of the variable, 1 to 15; any other is a fatal error
/// @param prefix       beginning of the file name: *flow* and variable 3 give *flow000003.tmp*.
///                     While a file of that name exists, a "t" is appended. Names are cut at 40
///                     characters; one that cannot grow is a fatal error
/// @param dblprec,nblocks,idim,jdim,kdim  see the conventions above
/// @param blockpoints  points of each block; only their sum is used, and only with `dblprec`
/// @param varvalues    row 1 holds the variable, block after block
///
/// `tmpfile(ivar)` is set to the name before the first message, and to blanks if the file cannot be
/// created. The file is complete and closed on return.
void writenextp3dvar(integer ivar, const FileName& prefix, logical dblprec, integer nblocks,
                     integer_view blockpoints, array_view<const float, 2> varvalues,
                     integer_view idim, integer_view jdim, integer_view kdim);

/// The same with flow in double precision. `blockpoints` is used only without `dblprec`.
void writenextp3dvar(integer ivar, const FileName& prefix, logical dblprec, integer nblocks,
                     integer_view blockpoints, array_argument<const double, 2> varvalues,
                     integer_view idim, integer_view jdim, integer_view kdim);

/// Combines the temporary files `tmpfile(1)` to `tmpfile(n)`, n being the sum of `numrstrtvar`, to
/// a restart file, and deletes them. Memory: one block of all variables.
/// @param filename,iformat,nblocks,rsttype,multiblock  see the conventions above
/// @param leadvalues  triplets (3, point) of layouts 100 and 101
/// @param dblprec     precision of the temporary files and of the output; for text output the
///                    temporary files must be in double precision
/// @param nparamrows  rows of `sqvar` or `dqvar` in use (layout 2), as for `writep3drestart`
/// @param idim,jdim,kdim  extents of each block, as when the variables were written
///
/// Uses units 301 and 302 upward and closes them. The temporary files are deleted on success, for
/// an unknown `iformat`, and after a failed read of one of them, before it is reported; unit 301
/// then stays open and the output is incomplete. A temporary file with records of other lengths
/// than the blocks, or with more records than blocks, is a failed read. A missing one is a fatal
/// error and leaves the others. Invalid arguments are fatal errors before anything is opened.
/// Sections with variables above `numrstrtvar(1)` are written too.
void combinep3dvarfiles(array_view<const float, 2> leadvalues, const FileName& filename,
                        integer iformat, logical dblprec, integer nparamrows, integer nblocks,
                        integer_view idim, integer_view jdim, integer_view kdim, integer rsttype,
                        logical multiblock);

/// The same with triplets in double precision. Text shows all digits of the temporary files.
void combinep3dvarfiles(array_argument<const double, 2> leadvalues, const FileName& filename,
                        integer iformat, logical dblprec, integer nparamrows, integer nblocks,
                        integer_view idim, integer_view jdim, integer_view kdim, integer rsttype,
                        logical multiblock);

/// @}

/// Writes grid and flow solution as a Tecplot ASCII data file: a VARIABLES line, then for each
/// block a zone with a line per point, i fastest.
/// @param filename   file to write; an existing one is replaced
/// @param nblocks    number of blocks
/// @param xyz        coordinates (3, point)
/// @param qvar       flow values (5, point), written unchanged under the names U, V, W, P, RHO.
///                   With other numbers of rows in `xyz` and `qvar` the lines do not match the
///                   VARIABLES line
/// @param idim,jdim,kdim  extents of each block; above 9999 they are asterisks in the zone line
/// @param iblank     blanking value of each point
/// @param useiblank  write the IBLANK column
///
/// Reals are written in the shortest form that reads back to the same bits, and any NaN as `NaN`.
/// Unit 594 stays open: the file is complete after `p3dcloseunit(594)`, at the next call, or when
/// the run ends. Arrays with fewer points than the extents require are fatal errors; the file is
/// not touched then.
void writetecplotfile_p3d(const FileName& filename, integer nblocks,
                          array_view<const double, 2> xyz, array_view<const double, 2> qvar,
                          integer_view idim, integer_view jdim, integer_view kdim,
                          integer_view iblank, logical useiblank);

}  // namespace mod_p3dgrid

#pragma GCC visibility pop
