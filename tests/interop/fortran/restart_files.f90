! Restart files as a Fortran program reads and writes them, record by record.
module restart_files
  use, intrinsic :: iso_fortran_env, only: int32, real64
  use file_units
  use restart_bits
  use restart_forms
  use restart_records
  implicit none
  private
  public :: write_restart, read_restart

contains

  subroutine write_restart(path, f, s)
    character(*), intent(in) :: path
    type(RestartForm), intent(in) :: f
    type(Solution), intent(inout) :: s
    type(Connection) :: c
    c = Connection(opened(path, f%encoding, 'replace'), f%encoding == 'formatted', .true.)
    call move_header(c, f, s)
    call move_body(c, f, s)
    close (c%unit)
  end subroutine write_restart

  subroutine read_restart(path, f, s)
    character(*), intent(in) :: path
    type(RestartForm), intent(in) :: f
    type(Solution), intent(inout) :: s
    type(Connection) :: c
    c = Connection(opened(path, f%encoding, 'old'), f%encoding == 'formatted', .false.)
    call move_header(c, f, s)
    call make_room(f, s)
    call move_body(c, f, s)
    call expect_end(c%unit, f%encoding)
    close (c%unit)
  end subroutine read_restart

  subroutine move_header(c, f, s)
    type(Connection), intent(in) :: c
    type(RestartForm), intent(in) :: f
    type(Solution), intent(inout) :: s
    integer(int32) :: blocks(1), single_block(4), none(0)
    logical :: wide
    wide = c%text .or. f%is_double
    blocks = f%blocks
    select case (f%layout)
    case (0)
      call move_talven(c, wide, blocks, s)
    case (1, 100)
      call move_record(c, s%nstep, s%dtau, wide, blocks)
    case (101)
      single_block = [s%extents(:, 1), s%nstep]
      call move_record(c, single_block, s%dtau, wide, none)
      s%extents(:, 1) = single_block(1:3)
      s%nstep = single_block(4)
    case (2, 3)
      if (f%multiblock) call move_integers(c, blocks)
    end select
    if (blocks(1) /= f%blocks) error stop 'another number of blocks'
    call move_extents(c, f, s)
  end subroutine move_header

  subroutine move_talven(c, wide, blocks, s)
    type(Connection), intent(in) :: c
    logical, intent(in) :: wide
    integer(int32), intent(inout) :: blocks(1)
    type(Solution), intent(inout) :: s
    integer(int32) :: run(5), none(0)
    call move_integers(c, s%version)
    run = [blocks, s%run, s%nstep]
    call move_record(c, run, s%dtau, wide, none)
    blocks = run(1)
    s%run = run(2:4)
    s%nstep = run(5)
    if (s%version(2) == 1) call move_record(c, s%model, s%talven, .true., none)
  end subroutine move_talven

  subroutine move_extents(c, f, s)
    type(Connection), intent(in) :: c
    type(RestartForm), intent(in) :: f
    type(Solution), intent(inout) :: s
    integer(int32), allocatable :: list(:), counted(:, :)
    integer :: b, axes
    axes = merge(2, 3, f%planar)
    select case (f%layout)
    case (0, 1)
      do b = 1, f%blocks
        call move_integers(c, s%extents(:, b))
      end do
    case (2)
      list = reshape(s%extents(:axes, :), [axes * f%blocks])
      call move_integers(c, list)
      s%extents(:axes, :) = reshape(list, [axes, f%blocks])
    case (3)
      allocate (counted(axes + 1, f%blocks))
      counted(:axes, :) = s%extents(:axes, :)
      counted(axes + 1, :) = s%counts
      list = reshape(counted, [size(counted)])
      call move_integers(c, list)
      counted = reshape(list, shape(counted))
      s%extents(:axes, :) = counted(:axes, :)
      s%counts = counted(axes + 1, :)
    end select
    if (f%planar) s%extents(3, :) = 1
  end subroutine move_extents

  subroutine move_body(c, f, s)
    type(Connection), intent(in) :: c
    type(RestartForm), intent(in) :: f
    type(Solution), intent(inout) :: s
    integer :: b, k
    do b = 1, f%blocks
      if (f%layout == 2) call move_reals(c, s%parameters(:, b), c%text .or. f%is_double)
      if (f%leading) call move_leading(c, f, s, b)
      do k = merge(2, 1, f%leading), f%sections
        call move_section(c, f, s, b, f%section(:, k))
      end do
      if (f%layout == 0) call move_older_levels(c, f, s, b)
    end do
    if (f%layout == 101) call move_extensions(c, f, s)
  end subroutine move_body

  subroutine move_section(c, f, s, b, section)
    type(Connection), intent(in) :: c
    type(RestartForm), intent(in) :: f
    type(Solution), intent(inout) :: s
    integer, intent(in) :: b, section(2)
    integer, parameter :: third_momentum = 4
    integer, allocatable :: held(:)
    real(real64), allocatable :: columns(:, :)
    integer :: v
    allocate (held(0))
    do v = section(1), section(2)
      if (f%planar .and. f%layout == 2 .and. v == third_momentum) cycle
      held = [held, v]
    end do
    columns = s%flow(s%first(b):s%last(b), held)
    call move_columns(c, f, columns)
    s%flow(s%first(b):s%last(b), held) = columns
  end subroutine move_section

  ! The triplets of a block and its first five variables.
  subroutine move_leading(c, f, s, b)
    type(Connection), intent(in) :: c
    type(RestartForm), intent(in) :: f
    type(Solution), intent(inout) :: s
    integer, intent(in) :: b
    real(real64) :: both(s%last(b) - s%first(b) + 1, 8)
    associate (first => s%first(b), last => s%last(b))
      both(:, 1:3) = s%triplets(first:last, :)
      both(:, 4:8) = s%flow(first:last, 1:5)
      call move_columns(c, f, both)
      s%triplets(first:last, :) = both(:, 1:3)
      s%flow(first:last, 1:5) = both(:, 4:8)
    end associate
  end subroutine move_leading

  subroutine move_columns(c, f, columns)
    type(Connection), intent(in) :: c
    type(RestartForm), intent(in) :: f
    real(real64), intent(inout) :: columns(:, :)
    real(real64) :: list(size(columns))
    list = reshape(columns, shape(list))
    call move_reals(c, list, f%is_double)
    columns = reshape(list, shape(columns))
  end subroutine move_columns

  ! The first section's variables at one or two earlier times.
  subroutine move_older_levels(c, f, s, b)
    type(Connection), intent(in) :: c
    type(RestartForm), intent(in) :: f
    type(Solution), intent(inout) :: s
    integer, intent(in) :: b
    integer :: level
    do level = 1, merge(2, merge(1, 0, s%run(2) >= 2), s%run(2) == 3)
      call move_columns(c, f, &
                        s%older(s%first(b):s%last(b), f%section(1, 1):f%section(2, 1), level))
    end do
  end subroutine move_older_levels

  ! Flags, each with the variables that it announces, up to the flag 999.
  subroutine move_extensions(c, f, s)
    type(Connection), intent(in) :: c
    type(RestartForm), intent(in) :: f
    type(Solution), intent(inout) :: s
    integer :: m, b, v(2)
    do m = 1, 3
      call move_integers(c, s%flags(m:m))
      if (s%flags(m) == 999) return
      v = [1, 0]
      if (s%flags(m) == 1) v = [6, 10]
      if (s%flags(m) == 41 .and. m == 1) v = [6, 8]
      if (s%flags(m) == 41 .and. m == 2) v = [11, 13]
      do b = 1, merge(f%blocks, 0, v(1) <= v(2))
        call move_columns(c, f, s%flow(s%first(b):s%last(b), v(1):v(2)))
      end do
    end do
    error stop 'flags without end'
  end subroutine move_extensions

end module restart_files
