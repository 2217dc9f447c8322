! The records of a restart file, moved one statement to a record in either direction.
module restart_records
  use, intrinsic :: iso_fortran_env, only: int32, real32, real64
  implicit none
  private
  public :: Connection, move_record, move_integers, move_reals

  type :: Connection
    integer :: unit
    logical :: text
    logical :: writing
  end type Connection

contains

  ! Integers, reals and integers again; wide reals are doubles in the file.
  subroutine move_record(c, before, x, wide, after)
    type(Connection), intent(in) :: c
    integer(int32), intent(inout) :: before(:), after(:)
    real(real64), intent(inout) :: x(:)
    logical, intent(in) :: wide
    real(real32) :: narrow(merge(0, size(x), wide))
    if (c%writing) then
      if (.not. wide) narrow = real(x, real32)
      call write_record(c, before, x, wide, narrow, after)
    else
      call read_record(c, before, x, wide, narrow, after)
      if (.not. wide) x = real(narrow, real64)
    end if
  end subroutine move_record

  subroutine write_record(c, before, x, wide, narrow, after)
    type(Connection), intent(in) :: c
    integer(int32), intent(in) :: before(:), after(:)
    real(real64), intent(in) :: x(:)
    logical, intent(in) :: wide
    real(real32), intent(in) :: narrow(:)
    if (c%text .and. wide) then
      write (c%unit, *) before, x, after
    else if (c%text) then
      write (c%unit, *) before, narrow, after
    else if (wide) then
      write (c%unit) before, x, after
    else
      write (c%unit) before, narrow, after
    end if
  end subroutine write_record

  subroutine read_record(c, before, x, wide, narrow, after)
    type(Connection), intent(in) :: c
    integer(int32), intent(inout) :: before(:), after(:)
    real(real64), intent(inout) :: x(:)
    logical, intent(in) :: wide
    real(real32), intent(inout) :: narrow(:)
    if (c%text .and. wide) then
      read (c%unit, *) before, x, after
    else if (c%text) then
      read (c%unit, *) before, narrow, after
    else if (wide) then
      read (c%unit) before, x, after
    else
      read (c%unit) before, narrow, after
    end if
  end subroutine read_record

  subroutine move_integers(c, i)
    type(Connection), intent(in) :: c
    integer(int32), intent(inout) :: i(:)
    integer(int32) :: none(0)
    real(real64) :: no_reals(0)
    call move_record(c, i, no_reals, .true., none)
  end subroutine move_integers

  subroutine move_reals(c, x, wide)
    type(Connection), intent(in) :: c
    real(real64), intent(inout) :: x(:)
    logical, intent(in) :: wide
    integer(int32) :: none(0)
    call move_record(c, none, x, wide, none)
  end subroutine move_reals

end module restart_records
