! Grids, read and written by array sections. Double precision uses a staging array that is
! deallocated before the clock stops, as in the library.
module grid
  use support
  use source
  implicit none

contains

  subroutine read_grid(r, seconds, check)
    type(request), intent(in) :: r
    real(real64), intent(out) :: seconds
    integer(int64), intent(out) :: check
    real(real32), allocatable :: xyz(:, :)
    seconds = clock()
    if (r%precision == 'double' .and. r%form /= formatted) then
      call read_double(r, xyz)
    else
      call read_single(r, xyz)
    end if
    seconds = clock() - seconds
    check = bit_sum(xyz)
  end subroutine

  subroutine read_single(r, xyz)
    type(request), intent(in) :: r
    real(real32), allocatable, intent(out) :: xyz(:, :)
    integer(int32), allocatable :: extents(:, :)
    integer :: u, b, s, e, l
    call open_to_read(u, r%input, r%form)
    call read_header(u, r%form, extents)
    allocate (xyz(3, sum(product(extents, 1))))
    e = 0
    do b = 1, size(extents, 2)
      s = e + 1
      e = e + product(extents(:, b))
      if (r%form == formatted) then
        read (u, *) (xyz(l, s:e), l=1, 3)
      else
        read (u) (xyz(l, s:e), l=1, 3)
      end if
    end do
    close (u)
  end subroutine

  subroutine read_double(r, xyz)
    type(request), intent(in) :: r
    real(real32), allocatable, intent(out) :: xyz(:, :)
    real(real64), allocatable :: staging(:, :)
    integer(int32), allocatable :: extents(:, :)
    integer :: u, b, s, e, l
    call open_to_read(u, r%input, r%form)
    call read_header(u, r%form, extents)
    allocate (xyz(3, sum(product(extents, 1))))
    allocate (staging(3, sum(product(extents, 1))))
    e = 0
    do b = 1, size(extents, 2)
      s = e + 1
      e = e + product(extents(:, b))
      read (u) (staging(l, s:e), l=1, 3)
    end do
    xyz(:, :) = real(staging, real32)
    deallocate (staging)
    close (u)
  end subroutine

  subroutine write_grid(r, seconds)
    type(request), intent(in) :: r
    real(real64), intent(out) :: seconds
    real(real32), allocatable :: xyz(:, :)
    integer(int32), allocatable :: extents(:, :)
    call load_source(r%input, extents, xyz)
    seconds = clock()
    if (r%precision == 'double' .and. r%form /= formatted) then
      call write_double(r, extents, xyz)
    else
      call write_single(r, extents, xyz)
    end if
    seconds = clock() - seconds
  end subroutine

  subroutine write_single(r, extents, xyz)
    type(request), intent(in) :: r
    integer(int32), intent(in) :: extents(:, :)
    real(real32), intent(in) :: xyz(:, :)
    integer :: u, b, s, e, l
    call open_to_write(u, r%output, r%form)
    call write_header(u, r%form, extents)
    e = 0
    do b = 1, size(extents, 2)
      s = e + 1
      e = e + product(extents(:, b))
      if (r%form == formatted) then
        write (u, *) (xyz(l, s:e), l=1, 3)
      else
        write (u) (xyz(l, s:e), l=1, 3)
      end if
    end do
    close (u)
  end subroutine

  subroutine write_double(r, extents, xyz)
    type(request), intent(in) :: r
    integer(int32), intent(in) :: extents(:, :)
    real(real32), intent(in) :: xyz(:, :)
    real(real64), allocatable :: staging(:, :)
    integer :: u, b, s, e, l
    call open_to_write(u, r%output, r%form)
    call write_header(u, r%form, extents)
    allocate (staging(3, size(xyz, 2)))
    staging(:, :) = xyz
    e = 0
    do b = 1, size(extents, 2)
      s = e + 1
      e = e + product(extents(:, b))
      write (u) (staging(l, s:e), l=1, 3)
    end do
    deallocate (staging)
    close (u)
  end subroutine

  ! Text in fixed columns, as a program with an explicit format writes it.
  subroutine write_fixed_grid(r)
    type(request), intent(in) :: r
    real(real32), allocatable :: xyz(:, :)
    integer(int32), allocatable :: extents(:, :)
    integer :: u, b, s, e, l
    call load_source(r%input, extents, xyz)
    call open_to_write(u, r%output, formatted)
    write (u, '(i8)') size(extents, 2)
    write (u, '(3i8)') extents
    e = 0
    do b = 1, size(extents, 2)
      s = e + 1
      e = e + product(extents(:, b))
      write (u, '(5e16.8)') (xyz(l, s:e), l=1, 3)
    end do
    close (u)
  end subroutine

end module
