! A host's mod_gridvars that records the calls of the library and responds as a test requires.
module mod_gridvars
  implicit none
  public

  integer :: nfilesect = 1
  integer :: rstrtvarsct(30, 2) = 0
  integer :: numrstrtvar(30) = 0
  logical :: readallvars = .true.

  integer, parameter :: longest_call = 100
  character(longest_call) :: calls(200) = ' '
  integer :: ncalls = 0

  integer :: count_when_called = -1  ! numrstrtvar(1) when checkallocationerror was called last
  integer :: new_count = 0           ! set by checkallocationerror where it is positive
  logical :: stops_on_failure = .false.
  logical :: stops_on_allocation = .false.

contains

  subroutine dispreadwrite(mode, iparm1, iparm2, filename, iarg, larg, opt7, opt8, opt9, opt10, &
      opt11)
    integer, intent(in) :: mode, iparm1, iparm2, iarg
    character(40), intent(in) :: filename
    logical, intent(in) :: larg
    integer, intent(in), optional :: opt7
    logical, intent(in), optional :: opt8, opt9, opt10, opt11
    character(longest_call) :: text
    character(12) :: variable
    variable = '-'
    if (present(opt7)) write (variable, '(i0)') opt7
    write (text, '(a, 3(i0, ", "), 2a, i0, 10a)') 'dispreadwrite(', mode, iparm1, iparm2, &
      trim(filename), ', ', iarg, ', ', shown(larg), ', ', trim(variable), ', ', shown(opt8), &
      ', ', shown(opt9), ', ', shown(opt10) // ', ' // shown(opt11) // ')'
    call note(text)
  end subroutine

  subroutine checkallocationerror(status)
    integer, intent(in) :: status
    character(longest_call) :: text
    write (text, '(a, i0, a)') 'checkallocationerror(', status, ')'
    call note(text)
    count_when_called = numrstrtvar(1)
    if (new_count > 0) numrstrtvar(1) = new_count
    if (stops_on_allocation) stop 7
  end subroutine

  subroutine dispfilereaderror()
    call note('dispfilereaderror()')
    if (stops_on_failure) stop 5
  end subroutine

  subroutine note(text)
    character(*), intent(in) :: text
    ncalls = ncalls + 1
    if (ncalls <= size(calls)) calls(ncalls) = text
  end subroutine

  pure character(1) function shown(flag)
    logical, intent(in), optional :: flag
    shown = '-'
    if (present(flag)) shown = merge('T', 'F', flag)
  end function

  ! One section of the first variables.
  subroutine set_section(variables)
    integer, intent(in) :: variables
    nfilesect = 1
    rstrtvarsct = 0
    rstrtvarsct(1, :) = [1, variables]
    numrstrtvar = 0
    numrstrtvar(1) = variables
    readallvars = .true.
  end subroutine

end module
