! A grid in memory, and its exchange with the other side as bit patterns: one integer in decimal per
! line, so that no conversion of reals can hide or add a difference. The lines are
!   block count; i, j, k of each block; for each block the bits of all x, all y, all z; then, where
!   the grid has blanking, the blanking values of the block.
module grid_bits
  use, intrinsic :: iso_fortran_env, only: int32, int64, real32, real64
  implicit none
  private
  public :: Grid, make_room, load_bits, save_bits, block_points, block_blanks

  type :: Grid
    logical :: is_double = .false.
    logical :: has_iblank = .false.
    integer :: axes = 3                           ! extents and coordinates in the file, 2 or 3
    integer(int32), allocatable :: extents(:, :)  ! (3, blocks)
    integer, allocatable :: first(:), last(:)     ! points of each block
    real(real32), allocatable :: single(:, :)     ! (points, 3), in use unless is_double
    real(real64), allocatable :: double(:, :)
    integer(int32), allocatable :: iblank(:)      ! no entries without blanking
  end type Grid

contains

  ! Numbers the points and allocates for them, once the extents are known.
  subroutine make_room(g)
    type(Grid), intent(inout) :: g
    integer :: b, blocks, total
    blocks = size(g%extents, 2)
    allocate (g%first(blocks), g%last(blocks))
    total = 0
    do b = 1, blocks
      g%first(b) = total + 1
      total = total + product(g%extents(:, b))
      g%last(b) = total
    end do
    allocate (g%single(merge(0, total, g%is_double), 3))
    allocate (g%double(merge(total, 0, g%is_double), 3))
    g%single = 0
    g%double = 0
    allocate (g%iblank(merge(total, 0, g%has_iblank)))
    g%iblank = 0
  end subroutine make_room

  integer function block_points(g, b)
    type(Grid), intent(in) :: g
    integer, intent(in) :: b
    block_points = g%last(b) - g%first(b) + 1
  end function block_points

  ! Last entry of iblank that belongs to the block's record: an empty range without blanking.
  integer function block_blanks(g, b)
    type(Grid), intent(in) :: g
    integer, intent(in) :: b
    block_blanks = merge(g%last(b), g%first(b) - 1, g%has_iblank)
  end function block_blanks

  subroutine load_bits(path, g)
    character(*), intent(in) :: path
    type(Grid), intent(inout) :: g
    integer :: u, b, p, c, blocks
    integer(int64) :: bits
    open (newunit=u, file=path, status='old', action='read', form='formatted')
    read (u, '(i20)') bits
    blocks = int(bits)
    allocate (g%extents(3, blocks))
    do b = 1, blocks
      do c = 1, 3
        read (u, '(i20)') bits
        g%extents(c, b) = int(bits, int32)
      end do
    end do
    call make_room(g)
    do b = 1, blocks
      do c = 1, 3
        do p = g%first(b), g%last(b)
          read (u, '(i20)') bits
          if (g%is_double) then
            g%double(p, c) = transfer(bits, g%double(p, c))
          else
            g%single(p, c) = transfer(int(bits, int32), g%single(p, c))
          end if
        end do
      end do
      do p = g%first(b), block_blanks(g, b)
        read (u, '(i20)') bits
        g%iblank(p) = int(bits, int32)
      end do
    end do
    close (u)
  end subroutine load_bits

  subroutine save_bits(path, g)
    character(*), intent(in) :: path
    type(Grid), intent(in) :: g
    integer :: u, b, p, c
    open (newunit=u, file=path, status='replace', action='write', form='formatted')
    write (u, '(i0)') size(g%extents, 2), g%extents
    do b = 1, size(g%extents, 2)
      do c = 1, 3
        do p = g%first(b), g%last(b)
          if (g%is_double) then
            write (u, '(i0)') transfer(g%double(p, c), 0_int64)
          else
            write (u, '(i0)') transfer(g%single(p, c), 0_int32)
          end if
        end do
      end do
      do p = g%first(b), block_blanks(g, b)
        write (u, '(i0)') g%iblank(p)
      end do
    end do
    close (u)
  end subroutine save_bits

end module grid_bits
