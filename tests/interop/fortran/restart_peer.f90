! The Fortran side of the restart file tests: turns bit patterns into a restart file and back.
!   restart_peer write FORM BITS RESTART
!   restart_peer read  FORM BITS RESTART
! FORM is a namelist that says how RESTART holds the solution.
program restart_peer
  use arguments
  use restart_bits
  use restart_files
  use restart_forms
  implicit none
  type(RestartForm) :: f
  type(Solution) :: s

  call load_form(argument(2), f)
  call empty_solution(f, s)
  if (chosen(argument(1), 'write', 'read')) then
    call load_bits(argument(3), f, s)
    call write_restart(argument(4), f, s)
  else
    call read_restart(argument(4), f, s)
    call save_bits(argument(3), s)
  end if

end program restart_peer
