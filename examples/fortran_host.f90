! A whole host in Fortran, with a mod_gridvars of its own (fortran_gridvars.f90): reads a grid and
! its solution, and writes the solution in double precision and big-endian byte order.
!
!     fortran_host GRID SOLUTION OUT
!
! Grid and solution are unformatted, in single precision, with a block count.

! The procedure of mod_gridvars that uses mod_p3dgrid.
submodule (mod_gridvars) reports
  use mod_p3dgrid, only: p3dfailure, p3dlastfailure
  implicit none

contains

  module subroutine dispfilereaderror()
    type(p3dfailure) :: failure
    failure = p3dlastfailure()
    print '(2a)', 'fortran_host: ', failure%text
    stop 1
  end subroutine

end submodule

! Properties of files that the arguments of the operations do not hold.
module file_traits
  use mod_p3dgrid, only: p3dcoding, p3d_big_endian
  implicit none
  character(1000) :: big_endian_file = ' '

contains

  subroutine choose_coding(name, coding)
    character(*), intent(in) :: name
    type(p3dcoding), intent(out) :: coding
    if (name == big_endian_file) coding%byte_order = p3d_big_endian
  end subroutine

end module

program fortran_host
  use file_traits
  use mod_gridvars
  use mod_p3dgrid
  implicit none
  integer, parameter :: unformatted = 0, solution_layout = 2, restart_write_unit = 301
  character(1000) :: grid, solution, out
  real, allocatable :: xyz(:, :), flow(:, :), triplets(:, :)
  integer, allocatable :: idim(:), jdim(:), kdim(:), iblank(:)
  integer :: nblocks, ndim

  call get_command_argument(1, grid)
  call get_command_argument(2, solution)
  call get_command_argument(3, out)
  if (out == ' ') error stop 'usage: fortran_host GRID SOLUTION OUT'

  rstrtvarsct(1, :) = [1, 5]
  numrstrtvar(1) = 5
  big_endian_file = out
  call p3dsetcoding(choose_coding)
  call p3dsetdebug(.false.)

  call readp3dgrid(grid, unformatted, .false., nblocks, ndim, xyz, idim, jdim, kdim, iblank, &
                   .false., .true.)
  call checkp3drstrtheader(grid, unformatted, solution, unformatted, .false., solution_layout, &
                           .true.)
  call readp3drestart(solution, unformatted, .false., nblocks, idim*jdim*kdim, flow, triplets, &
                      idim, jdim, kdim, solution_layout, .true.)
  print '(a, i0, a, f0.3)', 'points: ', size(xyz, 2), ', free-stream Mach number: ', p3dxm1
  call writep3drestart(out, unformatted, .true., nblocks, nblocks, flow, triplets, idim, jdim, &
                       kdim, solution_layout, .true.)
  call p3dcloseunit(restart_write_unit)  ! only now is the file complete

end program
