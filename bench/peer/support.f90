! Command line, clock, peak memory and files of the Fortran side.
module support
  use, intrinsic :: iso_fortran_env, only: int32, int64, real32, real64
  implicit none

  character(*), parameter :: formatted = 'formatted', binary = 'binary'
  integer, parameter :: variables = 5, wanted_variable = 3

  type request
    character(:), allocatable :: operation, form, precision, input, output
    logical :: new_output
  end type

contains

  function argument(position) result(text)
    integer, intent(in) :: position
    character(:), allocatable :: text
    integer :: length
    call get_command_argument(position, length=length)
    allocate (character(length) :: text)
    call get_command_argument(position, text)
  end function

  function clock() result(seconds)
    real(real64) :: seconds
    integer(int64) :: count, rate
    call system_clock(count, rate)
    seconds = real(count, real64)/real(rate, real64)
  end function

  ! Sum of the values' bits as signed integers.
  pure function bit_sum(values) result(total)
    real(real32), intent(in) :: values(:, :)
    integer(int64) :: total
    integer :: i, j
    total = 0
    do j = 1, size(values, 2)
      do i = 1, size(values, 1)
        total = total + transfer(values(i, j), 0_int32)
      end do
    end do
  end function

  ! Peak resident memory of this process, in KiB.
  function peak_kib() result(peak)
    integer(int64) :: peak
    integer :: u, status
    character(200) :: line
    peak = 0
    open (newunit=u, file='/proc/self/status', status='old', action='read')
    do
      read (u, '(a)', iostat=status) line
      if (status /= 0) exit
      if (line(1:6) == 'VmHWM:') read (line(7:index(line, 'kB') - 1), *) peak
    end do
    close (u)
  end function

  subroutine use_memory(mib)
    integer, intent(in) :: mib
    integer(int64), allocatable, volatile :: memory(:)
    allocate (memory(131072_int64*mib))
    memory = 1
    deallocate (memory)
  end subroutine

  subroutine open_to_read(u, path, form)
    integer, intent(out) :: u
    character(*), intent(in) :: path, form
    select case (form)
    case (formatted)
      open (newunit=u, file=path, form='formatted', status='old', action='read')
    case (binary)
      open (newunit=u, file=path, form='unformatted', access='stream', status='old', action='read')
    case default
      open (newunit=u, file=path, form='unformatted', status='old', action='read')
    end select
  end subroutine

  subroutine open_to_write(u, path, form)
    integer, intent(out) :: u
    character(*), intent(in) :: path, form
    select case (form)
    case (formatted)
      open (newunit=u, file=path, form='formatted', status='unknown', action='write')
    case (binary)
      open (newunit=u, file=path, form='unformatted', access='stream', status='unknown', &
            action='write')
    case default
      open (newunit=u, file=path, form='unformatted', status='unknown', action='write')
    end select
  end subroutine

  subroutine delete(path)
    character(*), intent(in) :: path
    integer :: u
    open (newunit=u, file=path, status='unknown')
    close (u, status='delete')
  end subroutine

  ! Number of blocks, then the extents (3, block).
  subroutine read_header(u, form, extents)
    integer, intent(in) :: u
    character(*), intent(in) :: form
    integer(int32), allocatable, intent(out) :: extents(:, :)
    integer(int32) :: blocks
    if (form == formatted) then
      read (u, *) blocks
      allocate (extents(3, blocks))
      read (u, *) extents
    else
      read (u) blocks
      allocate (extents(3, blocks))
      read (u) extents
    end if
  end subroutine

  subroutine write_header(u, form, extents)
    integer, intent(in) :: u
    character(*), intent(in) :: form
    integer(int32), intent(in) :: extents(:, :)
    integer(int32) :: blocks
    blocks = size(extents, 2)
    if (form == formatted) then
      write (u, *) blocks
      write (u, *) extents
    else
      write (u) blocks
      write (u) extents
    end if
  end subroutine

end module
