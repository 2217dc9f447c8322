! The measured operations of a host in Fortran, through the module.
!
!     host WARM_MIB OPERATION FORM PRECISION INPUT OUTPUT existing|new
!
! Prints what the plain Fortran side prints.
program host
  use mod_gridvars
  use mod_p3dgrid
  use support
  use source
  implicit none

  integer, parameter :: solution_layout = 2
  type(request) :: r
  real(real64) :: seconds
  integer(int64) :: check
  integer :: warm_mib, iformat
  character(:), allocatable :: text

  if (command_argument_count() /= 7) error stop 'seven arguments are needed'
  text = argument(1)
  read (text, *) warm_mib
  r%operation = argument(2)
  r%form = argument(3)
  r%precision = argument(4)
  r%input = argument(5)
  r%output = argument(6)
  r%new_output = argument(7) == 'new'
  iformat = 0
  if (r%form == formatted) iformat = 1
  if (r%form == binary) iformat = 2
  check = 0
  call p3dsetmessages(drop_line)
  if (r%new_output) call delete(r%output)
  if (warm_mib > 0) call use_memory(warm_mib)
  select case (r%operation)
  case ('grid-read')
    call read_grid
  case ('grid-write')
    call write_grid
  case ('restart-read')
    call read_restart
  case ('restart-write')
    call write_restart
  case default
    error stop 'unknown operation'
  end select
  print '(a,1x,f0.9)', 'seconds', seconds
  print '(a,1x,i0)', 'peak', peak_kib()
  print '(a,1x,i0)', 'check', check

contains

  subroutine read_grid
    real(real32), allocatable :: xyz(:, :)
    integer, allocatable :: idim(:), jdim(:), kdim(:), iblank(:)
    integer :: nblocks, ndim
    seconds = clock()
    call readp3dgrid(r%input, iformat, r%precision == 'double', nblocks, ndim, xyz, idim, jdim, &
                     kdim, iblank, .false., .true.)
    seconds = clock() - seconds
    check = bit_sum(xyz)
  end subroutine

  subroutine write_grid
    real(real32), allocatable :: xyz(:, :)
    integer(int32), allocatable :: extents(:, :)
    integer :: none(0)
    call load_source(r%input, extents, xyz)
    seconds = clock()
    call writep3dgrid(r%output, iformat, r%precision == 'double', size(extents, 2), 3, xyz, &
                      extents(1, :), extents(2, :), extents(3, :), none, .false., .true.)
    seconds = clock() - seconds
  end subroutine

  ! The extents are those that the header of the file holds.
  subroutine read_restart
    real(real32), allocatable :: flow(:, :), triplets(:, :)
    integer, allocatable :: idim(:), jdim(:), kdim(:)
    integer :: nblocks
    call readrestartheader(r%input, iformat, r%precision == 'double', nblocks, solution_layout, &
                           .true., idim, jdim, kdim)
    call p3dcloseunit(201)
    seconds = clock()
    call readp3drestart(r%input, iformat, r%precision == 'double', nblocks, idim*jdim*kdim, flow, &
                        triplets, idim, jdim, kdim, solution_layout, .true.)
    seconds = clock() - seconds
    check = bit_sum(flow)
  end subroutine

  subroutine write_restart
    real(real32), allocatable :: xyz(:, :), flow(:, :), triplets(:, :)
    integer(int32), allocatable :: extents(:, :)
    call load_source(r%input, extents, xyz, flow)
    allocate (dqvar(size(extents, 2), 4))
    dqvar = 0.5
    seconds = clock()
    call writep3drestart(r%output, iformat, r%precision == 'double', size(extents, 2), &
                         size(extents, 2), flow, triplets, extents(1, :), extents(2, :), &
                         extents(3, :), solution_layout, .true.)
    call p3dcloseunit(301)
    seconds = clock() - seconds
  end subroutine

  subroutine drop_line(line)
    character(*), intent(in) :: line
    if (len(line) < 0) error stop
  end subroutine

end program
