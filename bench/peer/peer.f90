! The measured operations in plain Fortran, written as an engineer would write them.
!
!     peer WARM_MIB OPERATION FORM PRECISION INPUT OUTPUT existing|new
!
! Prints lines 'seconds S', 'peak KIB' and 'check SUM'. Before the operation it allocates and frees
! WARM_MIB of memory.
program peer
  use support
  use grid
  use restart
  use variable
  use tecplot
  implicit none

  type(request) :: r
  real(real64) :: seconds
  integer(int64) :: check
  integer :: warm_mib
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
  check = 0
  if (r%new_output) call delete(r%output)
  if (warm_mib > 0) call use_memory(warm_mib)
  call run
  print '(a,1x,f0.9)', 'seconds', seconds
  print '(a,1x,i0)', 'peak', peak_kib()
  print '(a,1x,i0)', 'check', check

contains

  subroutine run
    seconds = 0
    select case (r%operation)
    case ('nothing')
    case ('grid-read')
      call read_grid(r, seconds, check)
    case ('grid-write')
      call write_grid(r, seconds)
    case ('restart-read')
      call read_restart(r, seconds, check)
    case ('restart-write')
      call write_restart(r, seconds)
    case ('variable-read-scalar', 'variable-read-sections')
      call read_variable(r, seconds, check)
    case ('tecplot-write')
      call write_tecplot(r, seconds)
    case ('fixed-grid')
      call write_fixed_grid(r)
    case ('fixed-restart')
      call write_fixed_restart(r)
    case default
      error stop 'unknown operation'
    end select
  end subroutine

end program
