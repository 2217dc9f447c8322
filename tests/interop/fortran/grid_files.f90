! Grid files as a Fortran program reads and writes them: one statement per record.
module grid_files
  use file_units
  use grid_bits
  implicit none
  private
  public :: write_grid, read_grid

contains

  subroutine write_grid(path, encoding, multiblock, g)
    character(*), intent(in) :: path, encoding
    logical, intent(in) :: multiblock
    type(Grid), intent(in) :: g
    integer :: u, b
    u = opened(path, encoding, 'replace')
    if (encoding == 'formatted') then
      if (multiblock) write (u, *) size(g%extents, 2)
      write (u, *) g%extents(:g%axes, :)
    else
      if (multiblock) write (u) size(g%extents, 2)
      write (u) g%extents(:g%axes, :)
    end if
    do b = 1, size(g%extents, 2)
      call write_block(u, encoding == 'formatted', g, g%first(b), g%last(b), block_blanks(g, b))
    end do
    close (u)
  end subroutine write_grid

  subroutine write_block(u, text, g, s, e, blanks)
    integer, intent(in) :: u, s, e, blanks
    logical, intent(in) :: text
    type(Grid), intent(in) :: g
    if (text .and. g%is_double) then
      write (u, *) g%double(s:e, :g%axes), g%iblank(s:blanks)
    else if (text) then
      write (u, *) g%single(s:e, :g%axes), g%iblank(s:blanks)
    else if (g%is_double) then
      write (u) g%double(s:e, :g%axes), g%iblank(s:blanks)
    else
      write (u) g%single(s:e, :g%axes), g%iblank(s:blanks)
    end if
  end subroutine write_block

  subroutine read_grid(path, encoding, multiblock, g)
    character(*), intent(in) :: path, encoding
    logical, intent(in) :: multiblock
    type(Grid), intent(inout) :: g
    integer :: u, b, blocks
    u = opened(path, encoding, 'old')
    blocks = 1
    if (multiblock) then
      if (encoding == 'formatted') then
        read (u, *) blocks
      else
        read (u) blocks
      end if
    end if
    allocate (g%extents(3, blocks))
    g%extents = 1
    if (encoding == 'formatted') then
      read (u, *) g%extents(:g%axes, :)
    else
      read (u) g%extents(:g%axes, :)
    end if
    call make_room(g)
    do b = 1, blocks
      call read_block(u, encoding == 'formatted', g, g%first(b), g%last(b), block_blanks(g, b))
    end do
    call expect_end(u, encoding)
    close (u)
  end subroutine read_grid

  subroutine read_block(u, text, g, s, e, blanks)
    integer, intent(in) :: u, s, e, blanks
    logical, intent(in) :: text
    type(Grid), intent(inout) :: g
    if (text .and. g%is_double) then
      read (u, *) g%double(s:e, :g%axes), g%iblank(s:blanks)
    else if (text) then
      read (u, *) g%single(s:e, :g%axes), g%iblank(s:blanks)
    else if (g%is_double) then
      read (u) g%double(s:e, :g%axes), g%iblank(s:blanks)
    else
      read (u) g%single(s:e, :g%axes), g%iblank(s:blanks)
    end if
  end subroutine read_block

end module grid_files
