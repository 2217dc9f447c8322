! A host's own mod_gridvars: it shows each announcement, and gives up on any failure.
module mod_gridvars
  implicit none
  integer :: nfilesect = 0, rstrtvarsct(30, 2) = 0, numrstrtvar(30) = 0
  logical :: readallvars = .true.

contains

  subroutine dispreadwrite(mode, iparm1, iparm2, filename, iarg, larg, opt7, opt8, opt9, opt10, &
      opt11)
    integer, intent(in) :: mode, iparm1, iparm2, iarg
    character(40), intent(in) :: filename
    logical, intent(in) :: larg
    integer, intent(in), optional :: opt7
    logical, intent(in), optional :: opt8, opt9, opt10, opt11
    print '(4a)', 'own mod_gridvars: ', merge('read ', 'write', mode == 1), ' ', trim(filename)
  end subroutine

  subroutine checkallocationerror(status)
    integer, intent(in) :: status
    if (status /= 0) stop 3
  end subroutine

  subroutine dispfilereaderror()
    stop 4
  end subroutine

end module
