! The arguments of the command.
module arguments
  implicit none
  private
  public :: argument, chosen

contains

  function argument(n) result(text)
    integer, intent(in) :: n
    character(:), allocatable :: text
    integer :: length
    call get_command_argument(n, length=length)
    allocate (character(length) :: text)
    call get_command_argument(n, text)
  end function argument

  logical function chosen(text, yes, no)
    character(*), intent(in) :: text, yes, no
    if (text /= yes .and. text /= no) error stop 'wrong arguments'
    chosen = text == yes
  end function chosen

end module arguments
