! writep3dgrid, read back by plain Fortran.
program write_grid_test
  use mod_p3dgrid
  use checks
  implicit none
  integer :: iformat, precision, blanked

  call p3dsetdebug(.false.)
  do iformat = 0, 2
    do precision = 0, 1
      do blanked = 0, 1
        call write_single(iformat, precision == 1, blanked == 1)
        call write_double(iformat, precision == 1, blanked == 1)
      end do
    end do
  end do
  call write_section_of_an_array()
  call write_no_blocks()
  call finish()

contains

  subroutine expect_calls_of_write(iformat, is_double, has_iblank, staged)
    integer, intent(in) :: iformat
    logical, intent(in) :: is_double, has_iblank, staged
    character(longest_call) :: expected(2)
    write (expected(1), '(a, i0, 7a)') 'dispreadwrite(2, 10, 200, written, ', iformat, ', ', &
      shown(is_double), ', -, ', shown(has_iblank), ', T, -, -)'
    expected(2) = 'checkallocationerror(0)'
    call expect_calls(expected(:merge(2, 1, staged)))
  end subroutine

  subroutine expect_file(iformat, is_double, has_iblank, expected)
    integer, intent(in) :: iformat
    logical, intent(in) :: is_double, has_iblank
    real(real64), intent(in) :: expected(3, total)
    type(Grid) :: g
    g%is_double = is_double
    g%has_iblank = has_iblank
    call read_grid('written', trim(encodings(iformat)), .true., g)
    call expect(all(g%extents == extents), 'extents')
    call expect(all(coordinates_in(g) == expected), 'coordinates')
    if (has_iblank) call expect(g%iblank(3) == -1, 'blanking')
  end subroutine

  subroutine write_single(iformat, is_double, has_iblank)
    integer, intent(in) :: iformat
    logical, intent(in) :: is_double, has_iblank
    type(Grid) :: g
    real(real32) :: xyz(3, total)
    integer, allocatable :: iblank(:)
    g = sample_grid(.false., .true.)
    xyz = transpose(g%single)
    if (has_iblank) iblank = g%iblank  ! else not allocated
    call set_circumstances('write singles', iformat, is_double)
    call writep3dgrid('written', iformat, is_double, 2, 3, xyz, extents(1, :), extents(2, :), &
                      extents(3, :), iblank, has_iblank, .true.)
    call expect_calls_of_write(iformat, is_double, has_iblank, is_double .and. iformat /= text)
    call expect_file(iformat, is_double .and. iformat /= text, has_iblank, real(xyz, real64))
  end subroutine

  subroutine write_double(iformat, is_double, has_iblank)
    integer, intent(in) :: iformat
    logical, intent(in) :: is_double, has_iblank
    type(Grid) :: g
    real(real64) :: xyz(3, total), expected(3, total)
    g = sample_grid(.true., .true.)
    xyz = transpose(g%double)
    call set_circumstances('write doubles', iformat, is_double)
    call writep3dgrid('written', iformat, is_double, 2, 3, xyz, extents(1, :), extents(2, :), &
                      extents(3, :), g%iblank, has_iblank, .true.)
    call expect_calls_of_write(iformat, is_double, has_iblank, &
        .not. is_double .and. iformat /= text)
    expected = xyz
    if (.not. is_double .and. iformat /= text) expected = real(real(xyz, real32), real64)
    call expect_file(iformat, is_double .or. iformat == text, has_iblank, expected)
  end subroutine

  ! Arrays that are not contiguous.
  subroutine write_section_of_an_array()
    type(Grid) :: g
    real(real32) :: spread_out(6, 2*total)
    integer :: table(3, 4)
    g = sample_grid(.false., .true.)
    spread_out = 0
    spread_out(1:5:2, 2::2) = transpose(g%single)
    table = 0
    table(:, 1:3:2) = extents
    call set_circumstances('sections of arrays', 0, .false.)
    call writep3dgrid('written', 0, .false., 2, 3, spread_out(1:5:2, 2::2), table(1, 1:3:2), &
                      table(2, 1:3:2), table(3, 1:3:2), g%iblank, .true., .true.)
    call expect_file(0, .false., .true., coordinates_in(g))
  end subroutine

  subroutine write_no_blocks()
    real(real32) :: xyz(3, 0)
    integer :: none(0), u, nblocks
    call set_circumstances('no blocks', 0, .false.)
    call writep3dgrid('written', 0, .false., 0, 3, xyz, none, none, none, none, .true., .true.)
    open (newunit=u, file='written', form='unformatted', status='old')
    read (u) nblocks
    read (u)
    close (u)
    call expect(nblocks == 0, 'block count')
  end subroutine

end program
