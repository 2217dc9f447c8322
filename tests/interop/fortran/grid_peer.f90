! The Fortran side of the grid tests: turns bit patterns into a grid file and back.
!   grid_peer write BITS GRID ENCODING PRECISION MULTIBLOCK IBLANK AXES
!   grid_peer read  BITS GRID ENCODING PRECISION MULTIBLOCK IBLANK AXES
! ENCODING is unformatted, formatted or binary, PRECISION single or double, MULTIBLOCK and
! IBLANK yes or no, AXES 2 or 3.
program grid_peer
  use arguments
  use grid_bits
  use grid_files
  implicit none
  type(Grid) :: g
  character(:), allocatable :: bits, path, encoding
  logical :: multiblock

  bits = argument(2)
  path = argument(3)
  encoding = argument(4)
  g%is_double = chosen(argument(5), 'double', 'single')
  multiblock = chosen(argument(6), 'yes', 'no')
  g%has_iblank = chosen(argument(7), 'yes', 'no')
  g%axes = merge(2, 3, chosen(argument(8), '2', '3'))
  if (chosen(argument(1), 'write', 'read')) then
    call load_bits(bits, g)
    call write_grid(path, encoding, multiblock, g)
  else
    call read_grid(path, encoding, multiblock, g)
    call save_bits(bits, g)
  end if

end program grid_peer
