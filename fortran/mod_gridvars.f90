! A minimal mod_gridvars for hosts that need no other: it announces nothing, reports failed reads on
! standard error and goes on, and ends the run when an allocation fails. The section table starts
! with one section of the five flow variables.
module mod_gridvars
  use, intrinsic :: iso_c_binding, only: c_int
  use, intrinsic :: iso_fortran_env, only: error_unit
  implicit none
  private

  integer, private :: row
  integer, public :: nfilesect = 1
  integer, public :: rstrtvarsct(30, 2) = reshape([1, (0, row=2, 30), 5, (0, row=2, 30)], [30, 2])
  integer, public :: numrstrtvar(30) = [5, (0, row=2, 30)]
  logical, public :: readallvars = .true.

  public :: dispreadwrite, checkallocationerror, dispfilereaderror

  interface
    ! A function of the library that prints the last failed read on standard error. This module
    ! cannot call mod_p3dgrid, which uses it.
    subroutine print_failure() bind(c, name='mod_p3dgrid_print_failure')
    end subroutine
  end interface

contains

  subroutine dispreadwrite(mode, iparm1, iparm2, filename, iarg, larg, opt7, opt8, opt9, opt10, &
      opt11)
    integer, intent(in) :: mode, iparm1, iparm2, iarg
    character(*), intent(in) :: filename
    logical, intent(in) :: larg
    integer, intent(in), optional :: opt7
    logical, intent(in), optional :: opt8, opt9, opt10, opt11
  end subroutine

  subroutine checkallocationerror(status)
    integer, intent(in) :: status
    integer, parameter :: already_allocated = 1
    if (status == 0) return
    if (status == already_allocated) then
      write (error_unit, '(a)') 'mod_gridvars: an array is allocated already'
    else
      write (error_unit, '(a)') 'mod_gridvars: out of memory'
    end if
    stop 2
  end subroutine

  subroutine dispfilereaderror()
    call print_failure()
  end subroutine

end module
