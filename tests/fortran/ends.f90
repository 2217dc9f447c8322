! Ends of a run, one for each argument: a callback that stops, a halt, a fatal error. What Fortran
! has written before must be there, and units of the library must be closed.
program ends_test
  use mod_p3dgrid
  use checks
  implicit none
  character(20) :: wanted
  type(Grid) :: g
  real(real32), allocatable :: xyz(:, :)
  integer, allocatable :: idim(:), jdim(:), kdim(:), iblank(:)
  integer :: nblocks, ndim
  type(RestartForm) :: f
  type(Solution) :: s

  call get_command_argument(1, wanted)
  call set_section(5)
  g = sample_grid(.false., .false.)
  f = sample_form(2, 0, .false., .false.)
  s = sample_solution(f)
  print '(a)', 'before'
  select case (wanted)
  case ('stop-on-failure')
    call write_grid('grid', 'unformatted', .true., g)
    call cut('grid', 60)
    stops_on_failure = .true.
    call readp3dgrid('grid', 0, .false., nblocks, ndim, xyz, idim, jdim, kdim, iblank, .false., &
                     .true.)
  case ('stop-on-allocation')
    ! Unit 301 is open and holds a header that has not been flushed.
    call writerestartheader('written', 0, .false., 2, extents(1, :), extents(2, :), extents(3, :), &
                            2, .true.)
    call write_grid('grid', 'unformatted', .true., g)
    stops_on_allocation = .true.
    call readp3dgrid('grid', 0, .false., nblocks, ndim, xyz, idim, jdim, kdim, iblank, .false., &
                     .true.)
  case ('halt', 'handled-halt')
    call write_grid('grid', 'unformatted', .true., g)
    f%extents(1, 2) = 1
    f%points = 9
    s = sample_solution(f)
    call write_restart('restart', f, s)
    if (wanted == 'handled-halt') call p3dsetrunend(stop_with_9)
    call checkp3drstrtheader('grid', 0, 'restart', 0, .false., 2, .true.)
  case ('fatal')
    call p3dsetrunend(return_from_end)
    call readp3dgridheader('missing', 0, nblocks, ndim, .true.)
  case ('full-disk')
    call writerestartheader('/dev/full', 0, .false., 2, extents(1, :), extents(2, :), &
                            extents(3, :), 2, .true.)
    nstep = 99  ! between the operations
    call p3dsetrunend(show_step)
    call p3dcloseunit(301)
  end select
  print '(a)', 'after'

contains

  subroutine stop_with_9(status, message)
    integer, intent(in) :: status
    character(*), intent(in) :: message
    print '(a, i0, 2a)', 'handler: ', status, ' ', message
    stop 9
  end subroutine

  subroutine show_step(status, message)
    integer, intent(in) :: status
    character(*), intent(in) :: message
    print '(a, i0)', 'handler: step ', nstep
  end subroutine

  subroutine return_from_end(status, message)
    integer, intent(in) :: status
    character(*), intent(in) :: message
    print '(a, i0, 2a)', 'handler: ', status, ' ', message
  end subroutine

end program
