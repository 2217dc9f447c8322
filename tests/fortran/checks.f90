! Common code of the test programs: grids and solutions in memory, which the modules of the interop
! tests write to files and read back with plain Fortran, and checks that count failures.
module checks
  use, intrinsic :: iso_fortran_env, only: error_unit, real32, real64
  use mod_gridvars
  use grid_bits, only: Grid, make_grid_room => make_room
  use grid_files
  use restart_bits, only: Solution, empty_solution, make_room
  use restart_files
  use restart_forms
  implicit none
  public

  character(11), parameter :: encodings(0:2) = [character(11) :: 'unformatted', 'formatted', &
      'binary']
  integer, parameter :: text = 1
  integer, parameter :: extents(3, 2) = reshape([2, 2, 2, 3, 1, 1], [3, 2])
  integer, parameter :: total = 11

  integer, private :: failures = 0
  character(100), private :: circumstances = ' '

contains

  ! Shown with each failure that follows.
  subroutine set_circumstances(name, iformat, is_double, layout)
    character(*), intent(in) :: name
    integer, intent(in) :: iformat
    logical, intent(in) :: is_double
    integer, intent(in), optional :: layout
    circumstances = name // ' ' // trim(encodings(iformat)) // merge(' double', ' single', &
        is_double)
    if (present(layout)) then
      write (circumstances(len_trim(circumstances) + 1:), '(a, i0)') ' layout ', layout
    end if
    ncalls = 0
  end subroutine

  subroutine expect(condition, what)
    logical, intent(in) :: condition
    character(*), intent(in) :: what
    if (condition) return
    failures = failures + 1
    write (error_unit, '(4a)') trim(circumstances), ': ', what
  end subroutine

  ! The calls since `set_circumstances`.
  subroutine expect_calls(expected)
    character(*), intent(in) :: expected(:)
    integer :: n
    logical :: same
    same = ncalls == size(expected)
    do n = 1, min(ncalls, size(expected))
      same = same .and. calls(n) == expected(n)
    end do
    if (same) return
    failures = failures + 1
    write (error_unit, '(2a)') trim(circumstances), ': calls'
    do n = 1, ncalls
      write (error_unit, '(2x, a)') trim(calls(n))
    end do
  end subroutine

  integer function count_calls(call_text)
    character(*), intent(in) :: call_text
    count_calls = count(calls(:ncalls) == call_text)
  end function

  subroutine finish()
    if (failures > 0) error stop 1
  end subroutine

  ! Coordinates that single precision does not hold, unless they are rounded to it.
  pure real(real64) function coordinate(c, p)
    integer, intent(in) :: c, p
    coordinate = c*100 + p + 1/3.0_real64
  end function

  pure real(real64) function flow_value(v, p)
    integer, intent(in) :: v, p
    flow_value = v*1000 + p + 0.1_real64
  end function

  function sample_grid(is_double, has_iblank) result(g)
    logical, intent(in) :: is_double, has_iblank
    type(Grid) :: g
    integer :: c, p
    g%is_double = is_double
    g%has_iblank = has_iblank
    g%extents = extents
    call make_grid_room(g)
    do c = 1, 3
      do p = 1, total
        if (is_double) g%double(p, c) = coordinate(c, p)
        if (.not. is_double) g%single(p, c) = real(coordinate(c, p), real32)
      end do
    end do
    if (has_iblank) g%iblank = [(p - 4, p=1, total)]
  end function

  ! The values of the file as an array (3, points) of doubles.
  function coordinates_in(g) result(xyz)
    type(Grid), intent(in) :: g
    real(real64) :: xyz(3, total)
    if (g%is_double) then
      xyz = transpose(g%double)
    else
      xyz = transpose(real(g%single, real64))
    end if
  end function

  function sample_form(layout, iformat, is_double, leading) result(f)
    integer, intent(in) :: layout, iformat
    logical, intent(in) :: is_double, leading
    type(RestartForm) :: f
    integer :: used
    used = merge(1, 2, layout == 101 .or. layout == 102)
    f%layout = layout
    f%encoding = encodings(iformat)
    f%is_double = is_double
    f%multiblock = .true.
    f%leading = leading
    f%blocks = used
    f%points = sum(product(extents(:, :used), 1))
    f%variables = 5
    f%sections = 1
    f%section(:, 1) = [1, 5]
    f%extents = extents(:, :used)
  end function

  function sample_solution(f) result(s)
    type(RestartForm), intent(in) :: f
    type(Solution) :: s
    integer :: v, p, b
    call empty_solution(f, s)
    call make_room(f, s)
    s%version = [3, merge(1, 0, f%is_double)]
    s%run = [5, 0, 1]
    s%nstep = 1234
    s%model = 6
    s%flags = 999
    s%dtau = 0.5_real64
    s%talven = [(v + 0.25_real64, v=1, 8)]
    s%counts = 5
    do b = 1, f%blocks
      s%parameters(:, b) = [(rounded(f, b*10 + v + 0.7_real64), v=1, 4)]
    end do
    do p = 1, f%points
      do v = 1, f%variables
        s%flow(p, v) = rounded(f, flow_value(v, p))
      end do
      do v = 1, 3
        s%triplets(p, v) = rounded(f, -coordinate(v, p))
      end do
    end do
  end function

  pure real(real64) function rounded(f, value)
    type(RestartForm), intent(in) :: f
    real(real64), intent(in) :: value
    rounded = value
    if (.not. f%is_double) rounded = real(real(value, real32), real64)
  end function

  logical function exists(path)
    character(*), intent(in) :: path
    inquire (file=path, exist=exists)
  end function

  ! The first bytes of a file, as a file cut short.
  subroutine cut(path, bytes)
    character(*), intent(in) :: path
    integer, intent(in) :: bytes
    character(bytes) :: content
    integer :: u
    open (newunit=u, file=path, access='stream', form='unformatted', status='old')
    read (u) content
    close (u)
    open (newunit=u, file=path, access='stream', form='unformatted', status='replace')
    write (u) content
    close (u)
  end subroutine

end module
