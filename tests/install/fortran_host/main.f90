! Writes a small grid in the current directory, reads it back, and ends with 0 if it is the same.
program main
  use mod_p3dgrid
  implicit none
  real :: xyz(3, 11)
  real, allocatable :: read_back(:, :)
  integer, allocatable :: idim(:), jdim(:), kdim(:), iblank(:)
  integer :: nblocks, ndim, p
  logical :: same
  xyz = reshape([(0.25*p - 3, p=1, 33)], [3, 11])
  call p3dsetdebug(.false.)
  call writep3dgrid('host.xyz', 0, .false., 2, 3, xyz, [2, 3], [2, 1], [2, 1], iblank, .false., &
                    .true.)
  call readp3dgrid('host.xyz', 0, .false., nblocks, ndim, read_back, idim, jdim, kdim, iblank, &
                   .false., .true.)
  same = nblocks == 2 .and. all(idim == [2, 3])
  if (same) same = all(read_back == xyz)
  if (.not. same) error stop 'the grid differs'
  print '(a)', 'the grid is the same'
end program
