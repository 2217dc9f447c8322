! The module for hosts in Fortran: the operations of the library by their names, with arrays of the
! host, and the module variables. It uses the host's `mod_gridvars`, which is compiled before it.
!
! The library keeps variables of its own. They are set from those of this module and of
! `mod_gridvars` when control passes from the host to the library (`to_library`), and copied back
! when it returns to the host or the library calls one of its procedures (`to_host`).
module mod_p3dgrid
  use, intrinsic :: iso_c_binding
  use, intrinsic :: iso_fortran_env, only: int64, real32, real64, output_unit
  use mod_gridvars, only: nfilesect, rstrtvarsct, numrstrtvar, readallvars, &
                          host_announces => dispreadwrite, &
                          host_checks_allocation => checkallocationerror, &
                          host_reports_read => dispfilereaderror
  implicit none
  private

  integer, parameter :: name_length = 40

  ! Module variables. The library's descriptions are in MOD_P3DReader.hpp.
  logical, public :: debugprint = .true.
  integer(c_int), target, public :: iflag(3) = 0
  integer(c_int), target, public :: eqid = 0, fileversion = 0, nstep = 0, itimeint = 0, &
                                    isgsmodel = 0, ibeta = 0, talnvar = 0
  real(real64), target, public :: dtau = 0, talalfa = 0, talbeta = 0, talgam = 0, talpr = 0, &
                                  talprt = 0, talre = 0, tals1 = 0, talxm1 = 0
  real(real64), target, public :: p3dxm1 = 0, p3dalfa = 0, p3dre = 0, p3dtau = 0
  integer(c_int), allocatable, target, public :: nfvar(:)
  real(real32), allocatable, target, public :: sqvar(:, :)
  real(real64), allocatable, target, public :: dqvar(:, :)
  character(name_length), target, public :: tmpfile(15) = ' '

  ! Status values that `checkallocationerror` receives.
  integer, parameter, public :: p3d_allocation_done = 0, p3d_already_allocated = 1, &
                                p3d_out_of_memory = 2

  ! Byte orders of `p3dcoding`.
  integer, parameter, public :: p3d_little_endian = 1, p3d_big_endian = 2

  ! Properties of a file that the arguments of the operations do not hold; 0 for the default.
  type, public :: p3dcoding
    integer :: byte_order = 0    ! default: that of the machine
    integer :: marker_bytes = 0  ! 4 or 8; default: 4
    integer :: dimensions = 0    ! 2 or 3; default: 3
  end type

  ! The last failed read. `status` is 0 if there is none, -1 at the end of the file, else positive.
  type, public :: p3dfailure
    character(:), allocatable :: file, found, expected
    character(:), allocatable :: text  ! all of it in one line
    integer :: unit = 0, status = 0
    integer(int64) :: record = 0  ! from 1
    integer(int64) :: offset = 0  ! byte, from 0
    integer(int64) :: line = 0    ! of text, from 1; 0 for other files
  end type

  abstract interface
    ! Returns the path of the file `name`.
    subroutine p3d_path_handler(name, path)
      character(*), intent(in) :: name
      character(:), allocatable, intent(out) :: path
    end subroutine
    ! Returns the properties of the file `name`.
    subroutine p3d_coding_handler(name, coding)
      import :: p3dcoding
      character(*), intent(in) :: name
      type(p3dcoding), intent(out) :: coding
    end subroutine
    ! Receives one line of messages.
    subroutine p3d_message_handler(line)
      character(*), intent(in) :: line
    end subroutine
    ! Called when the library ends the run: status 0 for a halt, 2 for a fatal error with its
    ! message. If it returns, the library ends the run.
    subroutine p3d_run_end_handler(status, message)
      integer, intent(in) :: status
      character(*), intent(in) :: message
    end subroutine
  end interface
  public :: p3d_path_handler, p3d_coding_handler, p3d_message_handler, p3d_run_end_handler

  public :: p3dsetdebug, readp3dgrid, readp3dgridheader, writep3dgrid, readrestartheader, &
            writerestartheader, checkp3drstrtheader, readp3drestart, writep3drestart, &
            readnextp3dvar, writenextp3dvar, combinep3dvarfiles, writetecplotfile_p3d
  public :: p3dsetpaths, p3dsetcoding, p3dsetmessages, p3dsetrunend, p3dcloseunit, &
            p3dsethugepages, p3dsetwholerecords, p3dlastfailure, p3dclearfailure, p3dversion

  ! The operations that move coordinates or flow, in single and in double precision.
  interface readp3dgrid
    module procedure readp3dgrid_single, readp3dgrid_double
  end interface
  interface writep3dgrid
    module procedure writep3dgrid_single, writep3dgrid_double
  end interface
  interface readp3drestart
    module procedure readp3drestart_single, readp3drestart_double
  end interface
  interface writep3drestart
    module procedure writep3drestart_single, writep3drestart_double
  end interface
  interface readnextp3dvar
    module procedure readnextp3dvar_single, readnextp3dvar_double
  end interface
  interface writenextp3dvar
    module procedure writenextp3dvar_single, writenextp3dvar_double
  end interface
  interface combinep3dvarfiles
    module procedure combinep3dvarfiles_single, combinep3dvarfiles_double
  end interface

  procedure(p3d_path_handler), pointer :: path_handler => null()
  procedure(p3d_coding_handler), pointer :: coding_handler => null()
  procedure(p3d_message_handler), pointer :: message_handler => null()
  procedure(p3d_run_end_handler), pointer :: run_end_handler => null()

  logical :: connected = .false.

  ! The variables of the library's contract with its host, which the library leaves undefined. They
  ! have the mangled C++ names of the members of the namespace mod_gridvars. Initial values and
  ! public access make them definitions that replace those of a shared library; no host uses them.
  integer(c_int), public, bind(c, name='_ZN12mod_gridvars9nfilesectE') :: &
      p3d_contract_nfilesect = 0
  integer(c_int), public, bind(c, name='_ZN12mod_gridvars11rstrtvarsctE') :: &
      p3d_contract_rstrtvarsct(30, 2) = 0
  integer(c_int), public, bind(c, name='_ZN12mod_gridvars11numrstrtvarE') :: &
      p3d_contract_numrstrtvar(30) = 0
  integer(c_int), public, bind(c, name='_ZN12mod_gridvars11readallvarsE') :: &
      p3d_contract_readallvars = 0

  ! An array that the library reads or fills. An absent or empty one has no address.
  type, bind(c) :: given_array
    type(c_ptr) :: address = c_null_ptr
    integer(c_int64_t) :: extents(2) = 0
    integer(c_int) :: real_bytes = 0  ! 4 or 8; 0 for integers
  end type

  ! What most operations know of a file: its arguments but for the name, and the length of the name.
  ! Results of an operation, and arguments that it does not have, are left out.
  type, bind(c) :: given_file
    integer(c_size_t) :: name_length = 0
    integer(c_int) :: iformat = 0, dblprec = 0
    integer(c_int) :: nblocks = 0
    type(given_array) :: idim, jdim, kdim
    integer(c_int) :: rsttype = 0, useiblank = 0, multiblock = 0
  end type

  ! Procedures of this module that the library calls. An allocatable passes through the library as
  ! the address of its descriptor, which the library does not read.
  type, bind(c) :: procedures
    type(c_funptr) :: allocate_integer, release_integer, locate_integer
    type(c_funptr) :: allocate_single, release_single, locate_single
    type(c_funptr) :: allocate_double, release_double, locate_double
    type(c_funptr) :: print_line, end_run, find_path, choose_coding
  end type

  interface
    subroutine library_connect(given, variables, count) bind(c, name='mod_p3dgrid_connect')
      import
      type(procedures), intent(in) :: given
      type(c_ptr), intent(in) :: variables(*)
      integer(c_int), value :: count
    end subroutine

    subroutine library_take_variables(debugprint) bind(c, name='mod_p3dgrid_take_variables')
      import
      integer(c_int), value :: debugprint
    end subroutine

    subroutine library_give_variables() bind(c, name='mod_p3dgrid_give_variables')
    end subroutine

    ! `array` is one of nfvar (1), sqvar (2) and dqvar (3); `values` is null for one that is not
    ! allocated.
    subroutine library_take_array(array, values, extents) bind(c, name='mod_p3dgrid_take_array')
      import
      integer(c_int), value :: array
      type(c_ptr), value :: values
      integer(c_int64_t), intent(in) :: extents(2)
    end subroutine

    function library_give_array(array, extents) result(values) &
        bind(c, name='mod_p3dgrid_give_array')
      import
      integer(c_int), value :: array
      integer(c_int64_t), intent(out) :: extents(2)
      type(c_ptr) :: values
    end function

    function library_optional_integer(argument, number) result(is_present) &
        bind(c, name='mod_p3dgrid_optional_integer')
      import
      type(c_ptr), value :: argument
      integer(c_int), intent(out) :: number
      integer(c_int) :: is_present
    end function

    function library_optional_logical(argument, flag) result(is_present) &
        bind(c, name='mod_p3dgrid_optional_logical')
      import
      type(c_ptr), value :: argument
      integer(c_int), intent(out) :: flag
      integer(c_int) :: is_present
    end function

    subroutine library_set_path(path, text, length) bind(c, name='mod_p3dgrid_set_path')
      import
      type(c_ptr), value :: path
      character(c_char), intent(in) :: text(*)
      integer(c_size_t), value :: length
    end subroutine

    subroutine library_readp3dgrid_single(filename, file, nblocks, ndim, xyz, idim, jdim, kdim, &
        iblank) bind(c, name='mod_p3dgrid_readp3dgrid_single')
      import
      character(c_char), intent(in) :: filename(*)
      type(given_file), intent(in) :: file
      integer(c_int), intent(inout) :: nblocks, ndim
      real(c_float), allocatable, intent(inout) :: xyz(:, :)
      integer(c_int), allocatable, intent(inout) :: idim(:), jdim(:), kdim(:), iblank(:)
    end subroutine

    subroutine library_readp3dgrid_double(filename, file, nblocks, ndim, xyz, idim, jdim, kdim, &
        iblank) bind(c, name='mod_p3dgrid_readp3dgrid_double')
      import
      character(c_char), intent(in) :: filename(*)
      type(given_file), intent(in) :: file
      integer(c_int), intent(inout) :: nblocks, ndim
      real(c_double), allocatable, intent(inout) :: xyz(:, :)
      integer(c_int), allocatable, intent(inout) :: idim(:), jdim(:), kdim(:), iblank(:)
    end subroutine

    subroutine library_readp3dgridheader(filename, file, nblocks, ndim, npoints) &
        bind(c, name='mod_p3dgrid_readp3dgridheader')
      import
      character(c_char), intent(in) :: filename(*)
      type(given_file), intent(in) :: file
      integer(c_int), intent(inout) :: nblocks, ndim
      integer(c_int), intent(inout), optional :: npoints
    end subroutine

    subroutine library_writep3dgrid(filename, file, ndim, xyz, iblank) &
        bind(c, name='mod_p3dgrid_writep3dgrid')
      import
      character(c_char), intent(in) :: filename(*)
      type(given_file), intent(in) :: file
      integer(c_int), value :: ndim
      type(given_array), intent(in) :: xyz, iblank
    end subroutine

    subroutine library_readrestartheader(filename, file, nblocks) &
        bind(c, name='mod_p3dgrid_readrestartheader')
      import
      character(c_char), intent(in) :: filename(*)
      type(given_file), intent(in) :: file
      integer(c_int), intent(inout) :: nblocks
    end subroutine

    subroutine library_readrestartheader_extents(filename, file, nblocks, idim, jdim, kdim) &
        bind(c, name='mod_p3dgrid_readrestartheader_extents')
      import
      character(c_char), intent(in) :: filename(*)
      type(given_file), intent(in) :: file
      integer(c_int), intent(inout) :: nblocks
      integer(c_int), allocatable, intent(inout) :: idim(:), jdim(:), kdim(:)
    end subroutine

    subroutine library_writerestartheader(filename, file) &
        bind(c, name='mod_p3dgrid_writerestartheader')
      import
      character(c_char), intent(in) :: filename(*)
      type(given_file), intent(in) :: file
    end subroutine

    subroutine library_checkp3drstrtheader(gridfile, grid, rstfile, restart) &
        bind(c, name='mod_p3dgrid_checkp3drstrtheader')
      import
      character(c_char), intent(in) :: gridfile(*), rstfile(*)
      type(given_file), intent(in) :: grid, restart
    end subroutine

    subroutine library_readp3drestart_single(filename, file, blockpoints, varvalues, auxvalues) &
        bind(c, name='mod_p3dgrid_readp3drestart_single')
      import
      character(c_char), intent(in) :: filename(*)
      type(given_file), intent(in) :: file
      type(given_array), intent(in) :: blockpoints
      real(c_float), allocatable, intent(inout) :: varvalues(:, :), auxvalues(:, :)
    end subroutine

    subroutine library_readp3drestart_double(filename, file, blockpoints, varvalues, auxvalues) &
        bind(c, name='mod_p3dgrid_readp3drestart_double')
      import
      character(c_char), intent(in) :: filename(*)
      type(given_file), intent(in) :: file
      type(given_array), intent(in) :: blockpoints
      real(c_double), allocatable, intent(inout) :: varvalues(:, :), auxvalues(:, :)
    end subroutine

    subroutine library_writep3drestart(filename, file, nparamrows, varvalues, auxvalues) &
        bind(c, name='mod_p3dgrid_writep3drestart')
      import
      character(c_char), intent(in) :: filename(*)
      type(given_file), intent(in) :: file
      integer(c_int), value :: nparamrows
      type(given_array), intent(in) :: varvalues, auxvalues
    end subroutine

    subroutine library_readnextp3dvar(ivar, filename, file, blockpoints, varvalues) &
        bind(c, name='mod_p3dgrid_readnextp3dvar')
      import
      integer(c_int), value :: ivar
      character(c_char), intent(in) :: filename(*)
      type(given_file), intent(in) :: file
      type(given_array), intent(in) :: blockpoints, varvalues
    end subroutine

    subroutine library_writenextp3dvar(ivar, prefix, file, blockpoints, varvalues) &
        bind(c, name='mod_p3dgrid_writenextp3dvar')
      import
      integer(c_int), value :: ivar
      character(c_char), intent(in) :: prefix(*)
      type(given_file), intent(in) :: file
      type(given_array), intent(in) :: blockpoints, varvalues
    end subroutine

    subroutine library_combinep3dvarfiles(leadvalues, filename, file, nparamrows) &
        bind(c, name='mod_p3dgrid_combinep3dvarfiles')
      import
      type(given_array), intent(in) :: leadvalues
      character(c_char), intent(in) :: filename(*)
      type(given_file), intent(in) :: file
      integer(c_int), value :: nparamrows
    end subroutine

    subroutine library_writetecplotfile_p3d(filename, file, xyz, qvar, iblank) &
        bind(c, name='mod_p3dgrid_writetecplotfile_p3d')
      import
      character(c_char), intent(in) :: filename(*)
      type(given_file), intent(in) :: file
      type(given_array), intent(in) :: xyz, qvar, iblank
    end subroutine

    subroutine library_use_handlers(paths, coding, run_end) bind(c, name='mod_p3dgrid_use_handlers')
      import
      integer(c_int), value :: paths, coding, run_end
    end subroutine

    subroutine library_closeunit(unit) bind(c, name='mod_p3dgrid_closeunit')
      import
      integer(c_int), value :: unit
    end subroutine

    subroutine library_sethugepages(wanted) bind(c, name='mod_p3dgrid_sethugepages')
      import
      integer(c_int), value :: wanted
    end subroutine

    subroutine library_setwholerecords(wanted) bind(c, name='mod_p3dgrid_setwholerecords')
      import
      integer(c_int), value :: wanted
    end subroutine

    subroutine library_clearfailure() bind(c, name='mod_p3dgrid_clearfailure')
    end subroutine

    ! Returns unit, status, record, offset and line of the last failed read.
    subroutine library_failure_place(place) bind(c, name='mod_p3dgrid_failure_place')
      import
      integer(c_int64_t), intent(out) :: place(5)
    end subroutine

    ! Returns a string that describes the last failed read, valid until the next call: the file (1),
    ! what was found (2), what was expected (3), or the whole line (4).
    function library_failure_text(which, length) result(text) &
        bind(c, name='mod_p3dgrid_failure_text')
      import
      integer(c_int), value :: which
      integer(c_size_t), intent(out) :: length
      type(c_ptr) :: text
    end function

    function library_version(length) result(text) bind(c, name='mod_p3dgrid_version')
      import
      integer(c_size_t), intent(out) :: length
      type(c_ptr) :: text
    end function
  end interface

contains

  ! Operations.

  subroutine p3dsetdebug(flag)
    logical, intent(in) :: flag
    debugprint = flag
  end subroutine

  subroutine readp3dgrid_single(filename, iformat, dblprec, nblocks, ndim, xyz, idim, jdim, kdim, &
      iblank, useiblank, multiblock)
    character(*), intent(in) :: filename
    integer, intent(in) :: iformat
    logical, intent(in) :: dblprec, useiblank, multiblock
    integer, intent(inout) :: nblocks, ndim
    real(real32), allocatable, intent(inout) :: xyz(:, :)
    integer, allocatable, intent(inout) :: idim(:), jdim(:), kdim(:), iblank(:)
    call to_library()
    call library_readp3dgrid_single(filename, file_of(filename, iformat, dblprec, &
        useiblank=useiblank, multiblock=multiblock), nblocks, ndim, xyz, idim, jdim, kdim, iblank)
    call to_host()
  end subroutine

  subroutine readp3dgrid_double(filename, iformat, dblprec, nblocks, ndim, xyz, idim, jdim, kdim, &
      iblank, useiblank, multiblock)
    character(*), intent(in) :: filename
    integer, intent(in) :: iformat
    logical, intent(in) :: dblprec, useiblank, multiblock
    integer, intent(inout) :: nblocks, ndim
    real(real64), allocatable, intent(inout) :: xyz(:, :)
    integer, allocatable, intent(inout) :: idim(:), jdim(:), kdim(:), iblank(:)
    call to_library()
    call library_readp3dgrid_double(filename, file_of(filename, iformat, dblprec, &
        useiblank=useiblank, multiblock=multiblock), nblocks, ndim, xyz, idim, jdim, kdim, iblank)
    call to_host()
  end subroutine

  subroutine readp3dgridheader(filename, iformat, nblocks, ndim, multiblock, npoints)
    character(*), intent(in) :: filename
    integer, intent(in) :: iformat
    integer, intent(inout) :: nblocks, ndim
    logical, intent(in) :: multiblock
    integer, intent(inout), optional :: npoints
    call to_library()
    call library_readp3dgridheader(filename, file_of(filename, iformat, multiblock=multiblock), &
        nblocks, ndim, npoints)
    call to_host()
  end subroutine

  ! `iblank` may be an array that is not allocated if `useiblank` is false.
  subroutine writep3dgrid_single(filename, iformat, dblprec, nblocks, ndim, xyz, idim, jdim, kdim, &
      iblank, useiblank, multiblock)
    character(*), intent(in) :: filename
    integer, intent(in) :: iformat, nblocks, ndim
    logical, intent(in) :: dblprec, useiblank, multiblock
    real(real32), contiguous, target, intent(in) :: xyz(:, :)
    integer, contiguous, target, intent(in) :: idim(:), jdim(:), kdim(:)
    integer, contiguous, target, intent(in), optional :: iblank(:)
    call to_library()
    call library_writep3dgrid(filename, file_of(filename, iformat, dblprec, nblocks, idim, jdim, &
        kdim, useiblank=useiblank, multiblock=multiblock), ndim, singles(xyz), integers(iblank))
    call to_host()
  end subroutine

  subroutine writep3dgrid_double(filename, iformat, dblprec, nblocks, ndim, xyz, idim, jdim, kdim, &
      iblank, useiblank, multiblock)
    character(*), intent(in) :: filename
    integer, intent(in) :: iformat, nblocks, ndim
    logical, intent(in) :: dblprec, useiblank, multiblock
    real(real64), contiguous, target, intent(in) :: xyz(:, :)
    integer, contiguous, target, intent(in) :: idim(:), jdim(:), kdim(:)
    integer, contiguous, target, intent(in), optional :: iblank(:)
    call to_library()
    call library_writep3dgrid(filename, file_of(filename, iformat, dblprec, nblocks, idim, jdim, &
        kdim, useiblank=useiblank, multiblock=multiblock), ndim, doubles(xyz), integers(iblank))
    call to_host()
  end subroutine

  ! `jdim` and `kdim` must be present if `idim` is.
  subroutine readrestartheader(filename, iformat, dblprec, nblocks, rsttype, multiblock, idim, &
      jdim, kdim)
    character(*), intent(in) :: filename
    integer, intent(in) :: iformat, rsttype
    logical, intent(in) :: dblprec, multiblock
    integer, intent(inout) :: nblocks
    integer, allocatable, intent(inout), optional :: idim(:), jdim(:), kdim(:)
    type(given_file) :: file
    file = file_of(filename, iformat, dblprec, rsttype=rsttype, multiblock=multiblock)
    call to_library()
    if (present(idim)) then
      call library_readrestartheader_extents(filename, file, nblocks, idim, jdim, kdim)
    else
      call library_readrestartheader(filename, file, nblocks)
    end if
    call to_host()
  end subroutine

  subroutine writerestartheader(filename, iformat, dblprec, nblocks, idim, jdim, kdim, rsttype, &
      multiblock)
    character(*), intent(in) :: filename
    integer, intent(in) :: iformat, nblocks, rsttype
    logical, intent(in) :: dblprec, multiblock
    integer, contiguous, target, intent(in) :: idim(:), jdim(:), kdim(:)
    call to_library()
    call library_writerestartheader(filename, file_of(filename, iformat, dblprec, nblocks, idim, &
        jdim, kdim, rsttype, multiblock=multiblock))
    call to_host()
  end subroutine

  subroutine checkp3drstrtheader(gridfile, gridformat, rstfile, rstformat, dblprec, rsttype, &
      multiblock)
    character(*), intent(in) :: gridfile, rstfile
    integer, intent(in) :: gridformat, rstformat, rsttype
    logical, intent(in) :: dblprec, multiblock
    call to_library()
    call library_checkp3drstrtheader(gridfile, file_of(gridfile, gridformat), rstfile, &
        file_of(rstfile, rstformat, dblprec, rsttype=rsttype, multiblock=multiblock))
    call to_host()
  end subroutine

  ! `blockpoints` may be an array that is not allocated if `readallvars` is true.
  subroutine readp3drestart_single(filename, iformat, dblprec, nblocks, blockpoints, varvalues, &
      auxvalues, idim, jdim, kdim, rsttype, multiblock)
    character(*), intent(in) :: filename
    integer, intent(in) :: iformat, nblocks, rsttype
    logical, intent(in) :: dblprec, multiblock
    integer, contiguous, target, intent(in), optional :: blockpoints(:)
    real(real32), allocatable, intent(inout) :: varvalues(:, :), auxvalues(:, :)
    integer, contiguous, target, intent(in) :: idim(:), jdim(:), kdim(:)
    call to_library()
    call library_readp3drestart_single(filename, file_of(filename, iformat, dblprec, nblocks, &
        idim, jdim, kdim, rsttype, multiblock=multiblock), integers(blockpoints), varvalues, &
        auxvalues)
    call to_host()
  end subroutine

  subroutine readp3drestart_double(filename, iformat, dblprec, nblocks, blockpoints, varvalues, &
      auxvalues, idim, jdim, kdim, rsttype, multiblock)
    character(*), intent(in) :: filename
    integer, intent(in) :: iformat, nblocks, rsttype
    logical, intent(in) :: dblprec, multiblock
    integer, contiguous, target, intent(in), optional :: blockpoints(:)
    real(real64), allocatable, intent(inout) :: varvalues(:, :), auxvalues(:, :)
    integer, contiguous, target, intent(in) :: idim(:), jdim(:), kdim(:)
    call to_library()
    call library_readp3drestart_double(filename, file_of(filename, iformat, dblprec, nblocks, &
        idim, jdim, kdim, rsttype, multiblock=multiblock), integers(blockpoints), varvalues, &
        auxvalues)
    call to_host()
  end subroutine

  ! `auxvalues` may be an array that is not allocated if the layout has no triplets.
  subroutine writep3drestart_single(filename, iformat, dblprec, nparamrows, nblocks, varvalues, &
      auxvalues, idim, jdim, kdim, rsttype, multiblock)
    character(*), intent(in) :: filename
    integer, intent(in) :: iformat, nparamrows, nblocks, rsttype
    logical, intent(in) :: dblprec, multiblock
    real(real32), contiguous, target, intent(in) :: varvalues(:, :)
    real(real32), contiguous, target, intent(in), optional :: auxvalues(:, :)
    integer, contiguous, target, intent(in) :: idim(:), jdim(:), kdim(:)
    call to_library()
    call library_writep3drestart(filename, file_of(filename, iformat, dblprec, nblocks, idim, &
        jdim, kdim, rsttype, multiblock=multiblock), nparamrows, singles(varvalues), &
        singles(auxvalues))
    call to_host()
  end subroutine

  subroutine writep3drestart_double(filename, iformat, dblprec, nparamrows, nblocks, varvalues, &
      auxvalues, idim, jdim, kdim, rsttype, multiblock)
    character(*), intent(in) :: filename
    integer, intent(in) :: iformat, nparamrows, nblocks, rsttype
    logical, intent(in) :: dblprec, multiblock
    real(real64), contiguous, target, intent(in) :: varvalues(:, :)
    real(real64), contiguous, target, intent(in), optional :: auxvalues(:, :)
    integer, contiguous, target, intent(in) :: idim(:), jdim(:), kdim(:)
    call to_library()
    call library_writep3drestart(filename, file_of(filename, iformat, dblprec, nblocks, idim, &
        jdim, kdim, rsttype, multiblock=multiblock), nparamrows, doubles(varvalues), &
        doubles(auxvalues))
    call to_host()
  end subroutine

  subroutine readnextp3dvar_single(ivar, filename, iformat, dblprec, nblocks, blockpoints, &
      varvalues, idim, jdim, kdim, rsttype, multiblock)
    character(*), intent(in) :: filename
    integer, intent(in) :: ivar, iformat, nblocks, rsttype
    logical, intent(in) :: dblprec, multiblock
    integer, contiguous, target, intent(in) :: blockpoints(:)
    real(real32), contiguous, target, intent(inout) :: varvalues(:, :)
    integer, contiguous, target, intent(in) :: idim(:), jdim(:), kdim(:)
    call to_library()
    call library_readnextp3dvar(ivar, filename, file_of(filename, iformat, dblprec, nblocks, idim, &
        jdim, kdim, rsttype, multiblock=multiblock), integers(blockpoints), singles(varvalues))
    call to_host()
  end subroutine

  subroutine readnextp3dvar_double(ivar, filename, iformat, dblprec, nblocks, blockpoints, &
      varvalues, idim, jdim, kdim, rsttype, multiblock)
    character(*), intent(in) :: filename
    integer, intent(in) :: ivar, iformat, nblocks, rsttype
    logical, intent(in) :: dblprec, multiblock
    integer, contiguous, target, intent(in) :: blockpoints(:)
    real(real64), contiguous, target, intent(inout) :: varvalues(:, :)
    integer, contiguous, target, intent(in) :: idim(:), jdim(:), kdim(:)
    call to_library()
    call library_readnextp3dvar(ivar, filename, file_of(filename, iformat, dblprec, nblocks, idim, &
        jdim, kdim, rsttype, multiblock=multiblock), integers(blockpoints), doubles(varvalues))
    call to_host()
  end subroutine

  subroutine writenextp3dvar_single(ivar, prefix, dblprec, nblocks, blockpoints, varvalues, idim, &
      jdim, kdim)
    character(*), intent(in) :: prefix
    integer, intent(in) :: ivar, nblocks
    logical, intent(in) :: dblprec
    integer, contiguous, target, intent(in), optional :: blockpoints(:)
    real(real32), contiguous, target, intent(in) :: varvalues(:, :)
    integer, contiguous, target, intent(in) :: idim(:), jdim(:), kdim(:)
    call to_library()
    call library_writenextp3dvar(ivar, prefix, file_of(prefix, dblprec=dblprec, nblocks=nblocks, &
        idim=idim, jdim=jdim, kdim=kdim), integers(blockpoints), singles(varvalues))
    call to_host()
  end subroutine

  subroutine writenextp3dvar_double(ivar, prefix, dblprec, nblocks, blockpoints, varvalues, idim, &
      jdim, kdim)
    character(*), intent(in) :: prefix
    integer, intent(in) :: ivar, nblocks
    logical, intent(in) :: dblprec
    integer, contiguous, target, intent(in), optional :: blockpoints(:)
    real(real64), contiguous, target, intent(in) :: varvalues(:, :)
    integer, contiguous, target, intent(in) :: idim(:), jdim(:), kdim(:)
    call to_library()
    call library_writenextp3dvar(ivar, prefix, file_of(prefix, dblprec=dblprec, nblocks=nblocks, &
        idim=idim, jdim=jdim, kdim=kdim), integers(blockpoints), doubles(varvalues))
    call to_host()
  end subroutine

  subroutine combinep3dvarfiles_single(leadvalues, filename, iformat, dblprec, nparamrows, &
      nblocks, idim, jdim, kdim, rsttype, multiblock)
    real(real32), contiguous, target, intent(in) :: leadvalues(:, :)
    character(*), intent(in) :: filename
    integer, intent(in) :: iformat, nparamrows, nblocks, rsttype
    logical, intent(in) :: dblprec, multiblock
    integer, contiguous, target, intent(in) :: idim(:), jdim(:), kdim(:)
    call to_library()
    call library_combinep3dvarfiles(singles(leadvalues), filename, file_of(filename, iformat, &
        dblprec, nblocks, idim, jdim, kdim, rsttype, multiblock=multiblock), nparamrows)
    call to_host()
  end subroutine

  subroutine combinep3dvarfiles_double(leadvalues, filename, iformat, dblprec, nparamrows, &
      nblocks, idim, jdim, kdim, rsttype, multiblock)
    real(real64), contiguous, target, intent(in) :: leadvalues(:, :)
    character(*), intent(in) :: filename
    integer, intent(in) :: iformat, nparamrows, nblocks, rsttype
    logical, intent(in) :: dblprec, multiblock
    integer, contiguous, target, intent(in) :: idim(:), jdim(:), kdim(:)
    call to_library()
    call library_combinep3dvarfiles(doubles(leadvalues), filename, file_of(filename, iformat, &
        dblprec, nblocks, idim, jdim, kdim, rsttype, multiblock=multiblock), nparamrows)
    call to_host()
  end subroutine

  subroutine writetecplotfile_p3d(filename, nblocks, xyz, qvar, idim, jdim, kdim, iblank, useiblank)
    character(*), intent(in) :: filename
    integer, intent(in) :: nblocks
    real(real64), contiguous, target, intent(in) :: xyz(:, :), qvar(:, :)
    integer, contiguous, target, intent(in) :: idim(:), jdim(:), kdim(:)
    integer, contiguous, target, intent(in), optional :: iblank(:)
    logical, intent(in) :: useiblank
    call to_library()
    call library_writetecplotfile_p3d(filename, file_of(filename, nblocks=nblocks, idim=idim, &
        jdim=jdim, kdim=kdim, useiblank=useiblank), doubles(xyz), doubles(qvar), integers(iblank))
    call to_host()
  end subroutine

  ! Switches of the run. Without an argument they restore the default.

  subroutine p3dsetpaths(handler)
    procedure(p3d_path_handler), optional :: handler
    path_handler => null()
    if (present(handler)) path_handler => handler
    call use_handlers()
  end subroutine

  subroutine p3dsetcoding(handler)
    procedure(p3d_coding_handler), optional :: handler
    coding_handler => null()
    if (present(handler)) coding_handler => handler
    call use_handlers()
  end subroutine

  ! By default messages go to `output_unit`.
  subroutine p3dsetmessages(handler)
    procedure(p3d_message_handler), optional :: handler
    message_handler => null()
    if (present(handler)) message_handler => handler
  end subroutine

  subroutine p3dsetrunend(handler)
    procedure(p3d_run_end_handler), optional :: handler
    run_end_handler => null()
    if (present(handler)) run_end_handler => handler
    call use_handlers()
  end subroutine

  subroutine p3dcloseunit(unit)
    integer, intent(in) :: unit
    call to_library()
    call library_closeunit(unit)
  end subroutine

  subroutine p3dsethugepages(wanted)
    logical, intent(in) :: wanted
    call library_sethugepages(bits(wanted))
  end subroutine

  subroutine p3dsetwholerecords(wanted)
    logical, intent(in) :: wanted
    call library_setwholerecords(bits(wanted))
  end subroutine

  function p3dlastfailure() result(failure)
    type(p3dfailure) :: failure
    integer(c_int64_t) :: place(5)
    call library_failure_place(place)
    failure%unit = int(place(1))
    failure%status = int(place(2))
    failure%record = place(3)
    failure%offset = place(4)
    failure%line = place(5)
    failure%file = failure_text(1)
    failure%found = failure_text(2)
    failure%expected = failure_text(3)
    failure%text = failure_text(4)
  end function

  subroutine p3dclearfailure()
    call library_clearfailure()
  end subroutine

  function p3dversion() result(version)
    character(:), allocatable :: version
    integer(c_size_t) :: length
    type(c_ptr) :: text
    text = library_version(length)
    version = fortran_text(text, length)
  end function

  ! Between this module and the library.

  function failure_text(which) result(text)
    integer, intent(in) :: which
    character(:), allocatable :: text
    integer(c_size_t) :: length
    type(c_ptr) :: address
    address = library_failure_text(which, length)
    text = fortran_text(address, length)
  end function

  ! Compilers store true in different ways; the library takes 1 and 0.
  elemental integer(c_int) function bits(flag)
    logical, intent(in) :: flag
    bits = merge(1_c_int, 0_c_int, flag)
  end function

  function file_of(name, iformat, dblprec, nblocks, idim, jdim, kdim, rsttype, useiblank, &
      multiblock) result(file)
    character(*), intent(in) :: name
    integer, intent(in), optional :: iformat, nblocks, rsttype
    logical, intent(in), optional :: dblprec, useiblank, multiblock
    integer, contiguous, target, intent(in), optional :: idim(:), jdim(:), kdim(:)
    type(given_file) :: file
    file%name_length = len(name, c_size_t)
    if (present(iformat)) file%iformat = iformat
    if (present(dblprec)) file%dblprec = bits(dblprec)
    if (present(nblocks)) file%nblocks = nblocks
    file%idim = integers(idim)
    file%jdim = integers(jdim)
    file%kdim = integers(kdim)
    if (present(rsttype)) file%rsttype = rsttype
    if (present(useiblank)) file%useiblank = bits(useiblank)
    if (present(multiblock)) file%multiblock = bits(multiblock)
  end function

  function integers(array) result(one)
    integer, contiguous, target, optional :: array(:)
    type(given_array) :: one
    if (.not. present(array)) return
    one%extents(1) = size(array, kind=c_int64_t)
    if (one%extents(1) > 0) one%address = c_loc(array)
  end function

  function singles(array) result(one)
    real(real32), contiguous, target, optional :: array(:, :)
    type(given_array) :: one
    if (.not. present(array)) return
    one%extents = shape(array, c_int64_t)
    if (product(one%extents) > 0) one%address = c_loc(array)
    one%real_bytes = 4
  end function

  function doubles(array) result(one)
    real(real64), contiguous, target, optional :: array(:, :)
    type(given_array) :: one
    if (.not. present(array)) return
    one%extents = shape(array, c_int64_t)
    if (product(one%extents) > 0) one%address = c_loc(array)
    one%real_bytes = 8
  end function

  function fortran_text(address, length) result(text)
    type(c_ptr), value :: address
    integer(c_size_t), value :: length
    character(:), allocatable :: text
    character(c_char), pointer :: characters(:)
    integer(c_size_t) :: i
    call c_f_pointer(address, characters, [length])
    allocate (character(length) :: text)
    do i = 1, length
      text(i:i) = characters(i)
    end do
  end function

  subroutine connect()
    type(procedures) :: given
    type(c_ptr) :: variables(22)
    if (connected) return
    connected = .true.
    given%allocate_integer = c_funloc(allocate_integer)
    given%release_integer = c_funloc(release_integer)
    given%locate_integer = c_funloc(locate_integer)
    given%allocate_single = c_funloc(allocate_single)
    given%release_single = c_funloc(release_single)
    given%locate_single = c_funloc(locate_single)
    given%allocate_double = c_funloc(allocate_double)
    given%release_double = c_funloc(release_double)
    given%locate_double = c_funloc(locate_double)
    given%print_line = c_funloc(print_line)
    given%end_run = c_funloc(end_run)
    given%find_path = c_funloc(find_path)
    given%choose_coding = c_funloc(choose_coding)
    ! In the order that the library expects.
    variables = [c_loc(iflag), c_loc(eqid), c_loc(fileversion), c_loc(nstep), c_loc(dtau), &
                 c_loc(itimeint), c_loc(isgsmodel), c_loc(ibeta), c_loc(talnvar), c_loc(talalfa), &
                 c_loc(talbeta), c_loc(talgam), c_loc(talpr), c_loc(talprt), c_loc(talre), &
                 c_loc(tals1), c_loc(talxm1), c_loc(p3dxm1), c_loc(p3dalfa), c_loc(p3dre), &
                 c_loc(p3dtau), c_loc(tmpfile)]
    call library_connect(given, variables, size(variables, kind=c_int))
  end subroutine

  subroutine use_handlers()
    call connect()
    call library_use_handlers(bits(associated(path_handler)), bits(associated(coding_handler)), &
                              bits(associated(run_end_handler)))
  end subroutine

  subroutine to_library()
    integer(c_int64_t) :: extents(2)
    type(c_ptr) :: values
    call connect()
    p3d_contract_nfilesect = nfilesect
    p3d_contract_rstrtvarsct = rstrtvarsct
    p3d_contract_numrstrtvar = numrstrtvar
    p3d_contract_readallvars = -bits(readallvars)  ! all bits set, as the library stores true
    call library_take_variables(bits(debugprint))
    extents = 1
    values = c_null_ptr
    if (allocated(nfvar)) then
      extents(1) = size(nfvar, kind=c_int64_t)
      values = c_loc(nfvar)
    end if
    call library_take_array(1, values, extents)
    values = c_null_ptr
    if (allocated(sqvar)) then
      extents = shape(sqvar, c_int64_t)
      values = c_loc(sqvar)
    end if
    call library_take_array(2, values, extents)
    values = c_null_ptr
    if (allocated(dqvar)) then
      extents = shape(dqvar, c_int64_t)
      values = c_loc(dqvar)
    end if
    call library_take_array(3, values, extents)
  end subroutine

  subroutine to_host()
    numrstrtvar = p3d_contract_numrstrtvar
    call library_give_variables()
    call arrays_to_host()
  end subroutine

  subroutine arrays_to_host()
    integer(c_int64_t) :: extents(2)
    type(c_ptr) :: address
    integer(c_int), pointer :: counts(:)
    real(c_float), pointer :: singles(:, :)
    real(c_double), pointer :: doubles(:, :)
    address = library_give_array(1, extents)
    if (c_associated(address)) then
      call c_f_pointer(address, counts, extents(1:1))
      nfvar = counts
    else if (allocated(nfvar)) then
      deallocate (nfvar)
    end if
    address = library_give_array(2, extents)
    if (c_associated(address)) then
      call c_f_pointer(address, singles, extents)
      sqvar = singles
    else if (allocated(sqvar)) then
      deallocate (sqvar)
    end if
    address = library_give_array(3, extents)
    if (c_associated(address)) then
      call c_f_pointer(address, doubles, extents)
      dqvar = doubles
    else if (allocated(dqvar)) then
      deallocate (dqvar)
    end if
  end subroutine

  ! The functions of the library's contract with its host, under their mangled C++ names.

  subroutine contract_dispreadwrite(mode, iparm1, iparm2, filename, iarg, larg, opt7, opt8, opt9, &
      opt10, opt11) bind(c, name='_ZN12mod_gridvars13dispreadwriteERKiS1_S1_RKN11mod_p3dgrid8Fil&
      &eNameES1_RKNS2_7logicalERKSt8optionalIiERKS9_IS6_ESF_SF_SF_')
    integer(c_int), intent(in) :: mode, iparm1, iparm2, iarg, larg
    character(c_char), intent(in) :: filename(name_length)
    type(c_ptr), value :: opt7, opt8, opt9, opt10, opt11
    character(name_length) :: name
    integer(c_int), target :: variable
    logical, target :: useiblank, multiblock
    integer(c_int), pointer :: given7
    logical, pointer :: given8, given9
    integer(c_int) :: flag
    integer :: i
    do i = 1, name_length
      name(i:i) = filename(i)
    end do
    ! A pointer that is not associated is an absent argument.
    nullify (given7, given8, given9)
    if (library_optional_integer(opt7, variable) /= 0) given7 => variable
    if (library_optional_logical(opt8, flag) /= 0) then
      useiblank = flag /= 0
      given8 => useiblank
    end if
    if (library_optional_logical(opt9, flag) /= 0) then
      multiblock = flag /= 0
      given9 => multiblock
    end if
    call to_host()
    call host_announces(mode, iparm1, iparm2, name, iarg, btest(larg, 0), given7, given8, given9)
    call to_library()
  end subroutine

  subroutine contract_checkallocationerror(status) &
      bind(c, name='_ZN12mod_gridvars20checkallocationerrorERKi')
    integer(c_int), intent(in) :: status
    call to_host()
    call host_checks_allocation(status)
    call to_library()
  end subroutine

  subroutine contract_dispfilereaderror() bind(c, name='_ZN12mod_gridvars17dispfilereaderrorEv')
    call to_host()
    call host_reports_read()
    call to_library()
  end subroutine

  ! Handlers of the library.

  subroutine print_line(text, length) bind(c, name='')
    type(c_ptr), value :: text
    integer(c_size_t), value :: length
    if (.not. associated(message_handler)) then
      write (output_unit, '(a)') fortran_text(text, length)
      return
    end if
    call to_host()
    call message_handler(fortran_text(text, length))
    call to_library()
  end subroutine

  subroutine end_run(status, text, length) bind(c, name='')
    integer(c_int), value :: status
    type(c_ptr), value :: text
    integer(c_size_t), value :: length
    call to_host()
    call run_end_handler(status, fortran_text(text, length))
    call to_library()
  end subroutine

  subroutine find_path(name, length, path) bind(c, name='')
    type(c_ptr), value :: name
    integer(c_size_t), value :: length
    type(c_ptr), value :: path
    character(:), allocatable :: found
    call to_host()
    call path_handler(fortran_text(name, length), found)
    call to_library()
    call library_set_path(path, found, len_trim(found, c_size_t))
  end subroutine

  subroutine choose_coding(name, length, byte_order, marker_bytes, dimensions) bind(c, name='')
    type(c_ptr), value :: name
    integer(c_size_t), value :: length
    integer(c_int), intent(out) :: byte_order, marker_bytes, dimensions
    type(p3dcoding) :: coding
    call to_host()
    call coding_handler(fortran_text(name, length), coding)
    call to_library()
    byte_order = coding%byte_order
    marker_bytes = coding%marker_bytes
    dimensions = coding%dimensions
  end subroutine

  ! Results: the library calls these to allocate the caller's arrays, which it then fills.

  function allocate_integer(array, extents) result(address) bind(c, name='')
    integer(c_int), allocatable, target, intent(inout) :: array(:)
    integer(c_int64_t), intent(in) :: extents(1)
    type(c_ptr) :: address
    integer :: status
    allocate (array(extents(1)), stat=status)
    address = c_null_ptr
    if (status == 0) address = c_loc(array)
  end function

  subroutine release_integer(array) bind(c, name='')
    integer(c_int), allocatable, intent(inout) :: array(:)
    deallocate (array)
  end subroutine

  function locate_integer(array, extents) result(address) bind(c, name='')
    integer(c_int), allocatable, target, intent(inout) :: array(:)
    integer(c_int64_t), intent(out) :: extents(1)
    type(c_ptr) :: address
    extents = 0
    address = c_null_ptr
    if (.not. allocated(array)) return
    extents = shape(array, c_int64_t)
    address = c_loc(array)
  end function

  function allocate_single(array, extents) result(address) bind(c, name='')
    real(c_float), allocatable, target, intent(inout) :: array(:, :)
    integer(c_int64_t), intent(in) :: extents(2)
    type(c_ptr) :: address
    integer :: status
    allocate (array(extents(1), extents(2)), stat=status)
    address = c_null_ptr
    if (status == 0) address = c_loc(array)
  end function

  subroutine release_single(array) bind(c, name='')
    real(c_float), allocatable, intent(inout) :: array(:, :)
    deallocate (array)
  end subroutine

  function locate_single(array, extents) result(address) bind(c, name='')
    real(c_float), allocatable, target, intent(inout) :: array(:, :)
    integer(c_int64_t), intent(out) :: extents(2)
    type(c_ptr) :: address
    extents = 0
    address = c_null_ptr
    if (.not. allocated(array)) return
    extents = shape(array, c_int64_t)
    address = c_loc(array)
  end function

  function allocate_double(array, extents) result(address) bind(c, name='')
    real(c_double), allocatable, target, intent(inout) :: array(:, :)
    integer(c_int64_t), intent(in) :: extents(2)
    type(c_ptr) :: address
    integer :: status
    allocate (array(extents(1), extents(2)), stat=status)
    address = c_null_ptr
    if (status == 0) address = c_loc(array)
  end function

  subroutine release_double(array) bind(c, name='')
    real(c_double), allocatable, intent(inout) :: array(:, :)
    deallocate (array)
  end subroutine

  function locate_double(array, extents) result(address) bind(c, name='')
    real(c_double), allocatable, target, intent(inout) :: array(:, :)
    integer(c_int64_t), intent(out) :: extents(2)
    type(c_ptr) :: address
    extents = 0
    address = c_null_ptr
    if (.not. allocated(array)) return
    extents = shape(array, c_int64_t)
    address = c_loc(array)
  end function

end module
