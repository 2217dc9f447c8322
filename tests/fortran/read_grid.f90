! readp3dgrid and readp3dgridheader, on files that plain Fortran has written.
program read_grid_test
  use mod_p3dgrid
  use checks
  implicit none
  integer :: iformat, precision, blanked

  call p3dsetdebug(.false.)
  do iformat = 0, 2
    do precision = 0, 1
      do blanked = 0, 1
        call read_single(iformat, precision == 1, blanked == 1)
        call read_double(iformat, precision == 1, blanked == 1)
        call read_header(iformat, precision == 1, blanked == 1)
      end do
    end do
  end do
  call read_one_block()
  call read_no_points()
  call read_cut_file()
  call read_into_allocated()
  call finish()

contains

  subroutine write_sample(iformat, is_double, has_iblank, g)
    integer, intent(in) :: iformat
    logical, intent(in) :: is_double, has_iblank
    type(Grid), intent(out) :: g
    g = sample_grid(is_double, has_iblank)
    call write_grid('grid', trim(encodings(iformat)), .true., g)
  end subroutine

  ! The call for a staging array is there if file and memory differ in precision.
  subroutine expect_calls_of_read(iformat, is_double, has_iblank, staged)
    integer, intent(in) :: iformat
    logical, intent(in) :: is_double, has_iblank, staged
    character(longest_call) :: expected(5)
    write (expected(1), '(a, i0, 7a)') 'dispreadwrite(1, 10, 200, grid, ', iformat, ', ', &
      shown(is_double), ', -, ', shown(has_iblank), ', T, -, -)'
    expected(2:) = 'checkallocationerror(0)'
    call expect_calls(expected(:3 + merge(1, 0, has_iblank) + merge(1, 0, staged)))
  end subroutine

  subroutine read_single(iformat, is_double, has_iblank)
    integer, intent(in) :: iformat
    logical, intent(in) :: is_double, has_iblank
    type(Grid) :: g
    real(real32), allocatable :: xyz(:, :)
    integer, allocatable :: idim(:), jdim(:), kdim(:), iblank(:)
    integer :: nblocks, ndim
    logical :: right
    call write_sample(iformat, is_double, has_iblank, g)
    call set_circumstances('read into singles', iformat, is_double)
    ! The name in a longer string.
    call readp3dgrid('grid' // repeat(' ', 100), iformat, is_double, nblocks, ndim, xyz, idim, &
        jdim, &
                     kdim, iblank, has_iblank, .true.)
    call expect_calls_of_read(iformat, is_double, has_iblank, is_double .and. iformat /= text)
    call expect(nblocks == 2 .and. ndim == 3, 'counts')
    call expect(all(idim == extents(1, :)) .and. all(jdim == extents(2, :)), 'extents')
    call expect(all(kdim == extents(3, :)), 'k extents')
    right = all(shape(xyz) == [3, total])
    if (right) right = all(xyz == real(coordinates_in(g), real32))
    call expect(right, 'coordinates')
    call expect(allocated(iblank) .eqv. has_iblank, 'allocation of blanking')
    if (allocated(iblank)) call expect(all(iblank == g%iblank), 'blanking')
  end subroutine

  subroutine read_double(iformat, is_double, has_iblank)
    integer, intent(in) :: iformat
    logical, intent(in) :: is_double, has_iblank
    type(Grid) :: g
    real(real64), allocatable :: xyz(:, :)
    integer, allocatable :: idim(:), jdim(:), kdim(:), iblank(:)
    integer :: nblocks, ndim
    logical :: right
    call write_sample(iformat, is_double, has_iblank, g)
    call set_circumstances('read into doubles', iformat, is_double)
    call readp3dgrid('grid', iformat, is_double, nblocks, ndim, xyz, idim, jdim, kdim, iblank, &
                     has_iblank, .true.)
    call expect_calls_of_read(iformat, is_double, has_iblank, .not. is_double .and. iformat /= text)
    right = all(shape(xyz) == [3, total])
    if (right .and. (is_double .or. iformat /= text)) right = all(xyz == coordinates_in(g))
    if (right .and. iformat == text) then
      ! Text of singles has 9 digits.
      right = all(abs(xyz - coordinates_in(g)) < 1e-4_real64)
    end if
    call expect(right, 'coordinates')
    if (has_iblank) call expect(all(iblank == g%iblank), 'blanking')
  end subroutine

  subroutine read_header(iformat, is_double, has_iblank)
    integer, intent(in) :: iformat
    logical, intent(in) :: is_double, has_iblank
    type(Grid) :: g
    integer :: nblocks, ndim, npoints
    call write_sample(iformat, is_double, has_iblank, g)
    call set_circumstances('header', iformat, is_double)
    nblocks = 0
    call readp3dgridheader('grid', iformat, nblocks, ndim, .true.)
    call expect(nblocks == 2 .and. ndim == 3, 'counts')
    call expect(ncalls == 0, 'calls without npoints')
    call readp3dgridheader('grid', iformat, nblocks, ndim, .true., npoints)
    call expect(npoints == total, 'points')
    call expect_calls(['checkallocationerror(0)'])
    call expect(.not. is_open('grid'), 'left open')
  end subroutine

  ! Whether a file of this name is open in any unit of Fortran; the library uses none.
  logical function is_open(path)
    character(*), intent(in) :: path
    inquire (file=path, opened=is_open)
  end function

  subroutine read_one_block()
    type(Grid) :: g
    real(real32), allocatable :: xyz(:, :)
    integer, allocatable :: idim(:), jdim(:), kdim(:), iblank(:)
    integer :: nblocks, ndim
    g = sample_grid(.false., .false.)
    g%extents = g%extents(:, 1:1)
    call write_grid('grid', 'unformatted', .false., g)
    call set_circumstances('one block', 0, .false.)
    call readp3dgrid('grid', 0, .false., nblocks, ndim, xyz, idim, jdim, kdim, iblank, .false., &
                     .false.)
    call expect(nblocks == 1, 'block count')
    call expect(all(shape(xyz) == [3, 8]), 'shape')
    call expect(all(xyz == real(transpose(g%single(:8, :)), real32)), 'coordinates')
  end subroutine

  subroutine read_no_points()
    real(real32), allocatable :: xyz(:, :)
    integer, allocatable :: idim(:), jdim(:), kdim(:), iblank(:)
    integer :: nblocks, ndim, u
    open (newunit=u, file='grid', form='unformatted', status='replace')
    write (u) 0
    write (u)
    close (u)
    call set_circumstances('no blocks', 0, .false.)
    call readp3dgrid('grid', 0, .false., nblocks, ndim, xyz, idim, jdim, kdim, iblank, .true., &
        .true.)
    call expect(nblocks == 0, 'block count')
    call expect(allocated(xyz) .and. allocated(idim) .and. allocated(iblank), 'allocation')
    call expect(size(idim) == 0 .and. size(iblank) == 0, 'sizes')
    call expect(all(shape(xyz) == [3, 0]), 'shape')
    call expect(count_calls('dispfilereaderror()') == 0, 'failure')
  end subroutine

  subroutine read_cut_file()
    type(Grid) :: g
    real(real32), allocatable :: xyz(:, :)
    integer, allocatable :: idim(:), jdim(:), kdim(:), iblank(:)
    integer :: nblocks, ndim
    type(p3dfailure) :: failure
    call write_sample(0, .false., .true., g)
    ! Two header records, and x of the first block with its marker.
    call cut('grid', 12 + 32 + 4 + 8*4)
    call p3dclearfailure()
    call set_circumstances('cut file', 0, .false.)
    call readp3dgrid('grid', 0, .false., nblocks, ndim, xyz, idim, jdim, kdim, iblank, .true., &
        .true.)
    call expect_calls([character(longest_call) :: &
                       'dispreadwrite(1, 10, 200, grid, 0, F, -, T, T, -, -)', &
                       'checkallocationerror(0)', 'checkallocationerror(0)', &
                       'checkallocationerror(0)', 'dispfilereaderror()'])
    call expect(nblocks == 2 .and. all(idim == extents(1, :)), 'header')
    call expect(all(xyz(1, :8) == g%single(:8, 1)), 'coordinates before the cut')
    call expect(all(iblank == 1), 'blanking that was not reached')
    failure = p3dlastfailure()
    call expect(failure%status == -1 .and. failure%unit == 13 .and. failure%record == 3, 'place')
    call expect(failure%file == 'grid' .and. failure%offset == 80, 'file and offset')
    call expect(index(failure%text, 'grid: record 3, byte 80: found ' // failure%found) == 1, &
        'text')
    call p3dclearfailure()
    failure = p3dlastfailure()
    call expect(failure%status == 0, 'cleared')
    call p3dcloseunit(13)
  end subroutine

  subroutine read_into_allocated()
    type(Grid) :: g
    real(real32), allocatable :: xyz(:, :)
    integer, allocatable :: idim(:), jdim(:), kdim(:), iblank(:)
    integer :: nblocks, ndim
    call write_sample(0, .false., .false., g)
    allocate (xyz(3, 2))
    xyz = -1
    call set_circumstances('allocated array', 0, .false.)
    call readp3dgrid('grid', 0, .false., nblocks, ndim, xyz, idim, jdim, kdim, iblank, .false., &
                     .true.)
    call expect(count_calls('checkallocationerror(1)') == 1, 'status of the allocation')
    call expect(count_calls('dispfilereaderror()') == 1, 'failed read')
    call expect(all(shape(xyz) == [3, 2]) .and. all(xyz == -1), 'array of the caller')
    call p3dcloseunit(13)
    deallocate (xyz, idim, jdim, kdim)
    ! One that is large enough is used.
    allocate (xyz(3, total + 1))
    xyz = -1
    call readp3dgrid('grid', 0, .false., nblocks, ndim, xyz, idim, jdim, kdim, iblank, .false., &
                     .true.)
    call expect(all(xyz(:, :total) == real(coordinates_in(g), real32)), 'coordinates')
    call expect(all(xyz(:, total + 1) == -1), 'column that is not used')
  end subroutine

end program
