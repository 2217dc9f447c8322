! What the library requires of its host. It is compiled before mod_p3dgrid, which uses it. A
! procedure that itself uses mod_p3dgrid is therefore in a submodule, here in fortran_host.f90.
module mod_gridvars
  implicit none
  integer :: nfilesect = 1
  integer :: rstrtvarsct(30, 2) = 0
  integer :: numrstrtvar(30) = 0
  logical :: readallvars = .true.

  interface
    module subroutine dispfilereaderror()
    end subroutine
  end interface

contains

  subroutine dispreadwrite(mode, iparm1, iparm2, filename, iarg, larg, opt7, opt8, opt9)
    integer, intent(in) :: mode, iparm1, iparm2, iarg
    character(*), intent(in) :: filename
    logical, intent(in) :: larg
    integer, intent(in), optional :: opt7
    logical, intent(in), optional :: opt8, opt9
    if (mode == 1) print '(2a)', 'reading ', trim(filename)
    if (mode == 2) print '(2a)', 'writing ', trim(filename)
  end subroutine

  subroutine checkallocationerror(status)
    integer, intent(in) :: status
    if (status /= 0) error stop 'out of memory, or an array is allocated already'
  end subroutine

end module
