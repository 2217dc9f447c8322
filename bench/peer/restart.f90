! Solutions: per block four flow parameters, then the five variables, by array sections.
module restart
  use support
  use source
  implicit none

  integer, parameter :: parameters = 4

contains

  subroutine read_restart(r, seconds, check)
    type(request), intent(in) :: r
    real(real64), intent(out) :: seconds
    integer(int64), intent(out) :: check
    real(real32), allocatable :: q(:, :)
    seconds = clock()
    if (r%precision == 'double' .and. r%form /= formatted) then
      call read_double_restart(r, q)
    else
      call read_single_restart(r, q)
    end if
    seconds = clock() - seconds
    check = bit_sum(q)
  end subroutine

  subroutine read_single_restart(r, q)
    type(request), intent(in) :: r
    real(real32), allocatable, intent(out) :: q(:, :)
    integer(int32), allocatable :: extents(:, :)
    real(real32) :: flow(parameters)
    integer :: u, b, s, e, m
    call open_to_read(u, r%input, r%form)
    call read_header(u, r%form, extents)
    allocate (q(variables, sum(product(extents, 1))))
    e = 0
    do b = 1, size(extents, 2)
      s = e + 1
      e = e + product(extents(:, b))
      if (r%form == formatted) then
        read (u, *) flow
        read (u, *) (q(m, s:e), m=1, variables)
      else
        read (u) flow
        read (u) (q(m, s:e), m=1, variables)
      end if
    end do
    close (u)
  end subroutine

  subroutine read_double_restart(r, q)
    type(request), intent(in) :: r
    real(real32), allocatable, intent(out) :: q(:, :)
    integer(int32), allocatable :: extents(:, :)
    real(real64), allocatable :: staging(:, :)
    real(real64) :: flow(parameters)
    integer :: u, b, s, e, m
    call open_to_read(u, r%input, r%form)
    call read_header(u, r%form, extents)
    allocate (q(variables, sum(product(extents, 1))))
    allocate (staging(variables, sum(product(extents, 1))))
    e = 0
    do b = 1, size(extents, 2)
      s = e + 1
      e = e + product(extents(:, b))
      read (u) flow
      read (u) (staging(m, s:e), m=1, variables)
    end do
    q(:, :) = real(staging, real32)
    deallocate (staging)
    close (u)
  end subroutine

  subroutine write_restart(r, seconds)
    type(request), intent(in) :: r
    real(real64), intent(out) :: seconds
    real(real32), allocatable :: xyz(:, :), q(:, :)
    integer(int32), allocatable :: extents(:, :)
    call load_source(r%input, extents, xyz, q)
    seconds = clock()
    if (r%precision == 'double' .and. r%form /= formatted) then
      call write_double_restart(r, extents, q)
    else
      call write_single_restart(r, extents, q)
    end if
    seconds = clock() - seconds
  end subroutine

  subroutine write_single_restart(r, extents, q)
    type(request), intent(in) :: r
    integer(int32), intent(in) :: extents(:, :)
    real(real32), intent(in) :: q(:, :)
    real(real32) :: flow(parameters)
    integer :: u, b, s, e, m
    flow = 0.5
    call open_to_write(u, r%output, r%form)
    call write_header(u, r%form, extents)
    e = 0
    do b = 1, size(extents, 2)
      s = e + 1
      e = e + product(extents(:, b))
      if (r%form == formatted) then
        write (u, *) flow
        write (u, *) (q(m, s:e), m=1, variables)
      else
        write (u) flow
        write (u) (q(m, s:e), m=1, variables)
      end if
    end do
    close (u)
  end subroutine

  subroutine write_double_restart(r, extents, q)
    type(request), intent(in) :: r
    integer(int32), intent(in) :: extents(:, :)
    real(real32), intent(in) :: q(:, :)
    real(real64), allocatable :: staging(:, :)
    real(real64) :: flow(parameters)
    integer :: u, b, s, e, m
    flow = 0.5
    call open_to_write(u, r%output, r%form)
    call write_header(u, r%form, extents)
    allocate (staging(variables, size(q, 2)))
    staging(:, :) = q
    e = 0
    do b = 1, size(extents, 2)
      s = e + 1
      e = e + product(extents(:, b))
      write (u) flow
      write (u) (staging(m, s:e), m=1, variables)
    end do
    deallocate (staging)
    close (u)
  end subroutine

  ! Text in fixed columns, as a program with an explicit format writes it.
  subroutine write_fixed_restart(r)
    type(request), intent(in) :: r
    real(real32), allocatable :: xyz(:, :), q(:, :)
    integer(int32), allocatable :: extents(:, :)
    real(real32) :: flow(parameters)
    integer :: u, b, s, e, m
    call load_source(r%input, extents, xyz, q)
    flow = 0.5
    call open_to_write(u, r%output, formatted)
    write (u, '(i8)') size(extents, 2)
    write (u, '(3i8)') extents
    e = 0
    do b = 1, size(extents, 2)
      s = e + 1
      e = e + product(extents(:, b))
      write (u, '(4e16.8)') flow
      write (u, '(5e16.8)') (q(m, s:e), m=1, variables)
    end do
    close (u)
  end subroutine

end module
