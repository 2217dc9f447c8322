! One variable of five: the whole record is read. Values that are not wanted go into a scalar, one
! by one, or into an array that is as long as a block.
module variable
  use support
  implicit none

  private :: read_by_scalar, read_by_sections, read_text

contains

  subroutine read_variable(r, seconds, check)
    type(request), intent(in) :: r
    real(real64), intent(out) :: seconds
    integer(int64), intent(out) :: check
    real(real32), allocatable :: var(:, :)
    seconds = clock()
    if (r%form == formatted) then
      call read_text(r, var)
    else if (r%operation == 'variable-read-scalar') then
      call read_by_scalar(r, var)
    else
      call read_by_sections(r, var)
    end if
    seconds = clock() - seconds
    check = bit_sum(var)
  end subroutine

  subroutine read_by_scalar(r, var)
    type(request), intent(in) :: r
    real(real32), allocatable, intent(out) :: var(:, :)
    integer(int32), allocatable :: extents(:, :)
    real(real32) :: flow(4), scrap
    integer :: u, b, s, e, i, m
    call open_to_read(u, r%input, r%form)
    call read_header(u, r%form, extents)
    allocate (var(1, sum(product(extents, 1))))
    e = 0
    do b = 1, size(extents, 2)
      s = e + 1
      e = e + product(extents(:, b))
      read (u) flow
      read (u) ((scrap, i=s, e), m=1, wanted_variable - 1), (var(1, i), i=s, e), &
        ((scrap, i=s, e), m=wanted_variable + 1, variables)
    end do
    close (u)
  end subroutine

  subroutine read_by_sections(r, var)
    type(request), intent(in) :: r
    real(real32), allocatable, intent(out) :: var(:, :)
    integer(int32), allocatable :: extents(:, :)
    real(real32), allocatable :: scrap(:)
    real(real32) :: flow(4)
    integer :: u, b, s, e, m, n
    call open_to_read(u, r%input, r%form)
    call read_header(u, r%form, extents)
    allocate (var(1, sum(product(extents, 1))))
    allocate (scrap(maxval(product(extents, 1))))
    e = 0
    do b = 1, size(extents, 2)
      n = product(extents(:, b))
      s = e + 1
      e = e + n
      read (u) flow
      read (u) (scrap(1:n), m=1, wanted_variable - 1), var(1, s:e), &
        (scrap(1:n), m=wanted_variable + 1, variables)
    end do
    close (u)
  end subroutine

  subroutine read_text(r, var)
    type(request), intent(in) :: r
    real(real32), allocatable, intent(out) :: var(:, :)
    integer(int32), allocatable :: extents(:, :)
    real(real32) :: flow(4), scrap
    integer :: u, b, s, e, i, m
    call open_to_read(u, r%input, r%form)
    call read_header(u, r%form, extents)
    allocate (var(1, sum(product(extents, 1))))
    e = 0
    do b = 1, size(extents, 2)
      s = e + 1
      e = e + product(extents(:, b))
      read (u, *) flow
      read (u, *) ((scrap, i=s, e), m=1, wanted_variable - 1), (var(1, i), i=s, e), &
        ((scrap, i=s, e), m=wanted_variable + 1, variables)
    end do
    close (u)
  end subroutine

end module
