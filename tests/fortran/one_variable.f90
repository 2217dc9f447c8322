! readnextp3dvar, writenextp3dvar and combinep3dvarfiles, compared with plain Fortran.
program one_variable_test
  use mod_p3dgrid
  use checks
  implicit none
  integer, parameter :: layouts(5) = [1, 2, 3, 100, 102]
  integer :: n, iformat, precision

  do n = 1, size(layouts)
    do iformat = 0, 2
      do precision = 0, 1
        call stream_singles(layouts(n), iformat, precision == 1)
        call stream_doubles(layouts(n), iformat, precision == 1)
      end do
    end do
  end do
  call read_a_row_of_an_array()
  call write_beside_an_existing_file()
  call combine_a_cut_file()
  call finish()

contains

  subroutine write_sample(layout, iformat, is_double, f, s)
    integer, intent(in) :: layout, iformat
    logical, intent(in) :: is_double
    type(RestartForm), intent(out) :: f
    type(Solution), intent(out) :: s
    f = sample_form(layout, iformat, is_double, layout == 100)
    s = sample_solution(f)
    call write_restart('restart', f, s)
    call set_section(5)
    if (allocated(nfvar)) deallocate (nfvar)
    if (allocated(sqvar)) deallocate (sqvar)
    if (allocated(dqvar)) deallocate (dqvar)
  end subroutine

  subroutine stream_singles(layout, iformat, is_double)
    integer, intent(in) :: layout, iformat
    logical, intent(in) :: is_double
    type(RestartForm) :: f
    type(Solution) :: s
    real(real32), allocatable :: varvalues(:, :), leadvalues(:, :)
    integer, allocatable :: blockpoints(:)
    integer :: v
    logical :: wide
    call write_sample(layout, iformat, is_double, f, s)
    if (iformat == text .and. is_double) return
    wide = is_double .or. iformat == text
    allocate (varvalues(2, f%points))
    leadvalues = real(transpose(s%triplets), real32)
    blockpoints = product(f%extents, 1)
    do v = 1, 5
      call set_circumstances('read one variable', iformat, is_double, layout)
      varvalues = -1
      call readnextp3dvar(v, 'restart', iformat, is_double, f%blocks, blockpoints, varvalues, &
                          f%extents(1, :), f%extents(2, :), f%extents(3, :), layout, .true.)
      call expect_announcement(v, layout, iformat, is_double)
      call expect(all(varvalues(1, :) == real(s%flow(:, v), real32)), 'variable')
      call expect(all(nint(varvalues(2, :)) == -1), 'other row')
      call set_circumstances('write one variable', iformat, is_double, layout)
      call writenextp3dvar(v, 'flow', wide, f%blocks, blockpoints, varvalues, f%extents(1, :), &
                           f%extents(2, :), f%extents(3, :))
      call expect(tmpfile(v) == 'flow00000' // achar(48 + v) // '.tmp', 'name')
      call expect(exists(tmpfile(v)), 'temporary file')
    end do
    call set_circumstances('combine', iformat, is_double, layout)
    s%flow = real(real(s%flow, real32), real64)
    s%triplets = real(real(s%triplets, real32), real64)
    call combinep3dvarfiles(leadvalues, 'combined', iformat, wide, f%blocks, f%blocks, &
                            f%extents(1, :), f%extents(2, :), f%extents(3, :), layout, .true.)
    call expect_combined(f, s, wide .and. iformat /= text)
  end subroutine

  subroutine stream_doubles(layout, iformat, is_double)
    integer, intent(in) :: layout, iformat
    logical, intent(in) :: is_double
    type(RestartForm) :: f
    type(Solution) :: s
    real(real64), allocatable :: varvalues(:, :)
    integer, allocatable :: blockpoints(:)
    integer :: v
    logical :: wide
    call write_sample(layout, iformat, is_double, f, s)
    if (iformat == text .and. .not. is_double) return
    wide = is_double .or. iformat == text
    allocate (varvalues(1, f%points))
    blockpoints = product(f%extents, 1)
    do v = 1, 5
      call set_circumstances('read one variable into doubles', iformat, is_double, layout)
      call readnextp3dvar(v, 'restart', iformat, is_double, f%blocks, blockpoints, varvalues, &
                          f%extents(1, :), f%extents(2, :), f%extents(3, :), layout, .true.)
      call expect_announcement(v, layout, iformat, is_double)
      call expect(all(varvalues(1, :) == s%flow(:, v)), 'variable')
      call set_circumstances('write one variable of doubles', iformat, is_double, layout)
      call writenextp3dvar(v, 'flow', wide, f%blocks, blockpoints, varvalues, f%extents(1, :), &
                           f%extents(2, :), f%extents(3, :))
      ! A staging array if file and memory differ.
      call expect(ncalls == merge(0, 1, wide), 'calls')
    end do
    call set_circumstances('combine doubles', iformat, is_double, layout)
    call combinep3dvarfiles(transpose(s%triplets), 'combined', iformat, wide, f%blocks, f%blocks, &
                            f%extents(1, :), f%extents(2, :), f%extents(3, :), layout, .true.)
    call expect_combined(f, s, wide)
  end subroutine

  subroutine expect_announcement(v, layout, iformat, is_double)
    integer, intent(in) :: v, layout, iformat
    logical, intent(in) :: is_double
    character(longest_call) :: expected
    integer :: codes(2)
    codes = [20, 300]
    if (layout == 2) codes = [40, 200]
    if (layout == 3) codes = [50, 200]
    write (expected, '(a, 2(i0, ", "), a, i0, 3a, i0, a)') 'dispreadwrite(1, ', codes, &
      'restart, ', iformat, ', ', shown(is_double), ', ', v, ', -, T, -, -)'
    call expect(calls(1) == expected, 'announcement')
    call expect(count_calls('checkallocationerror(0)') == ncalls - 1, 'allocations')
  end subroutine

  subroutine expect_combined(f, expected, is_double)
    type(RestartForm), intent(in) :: f
    type(Solution), intent(in) :: expected
    logical, intent(in) :: is_double
    type(RestartForm) :: written
    type(Solution) :: s
    integer :: v
    written = f
    written%is_double = is_double
    call empty_solution(written, s)
    call read_restart('combined', written, s)
    call expect(all(s%flow == expected%flow), 'combined flow')
    if (f%layout == 100) call expect(all(s%triplets == expected%triplets), 'combined triplets')
    if (f%layout == 2) call expect(all(s%parameters == expected%parameters), 'combined parameters')
    do v = 1, 5
      call expect(.not. exists(tmpfile(v)), 'temporary file that stays')
    end do
  end subroutine

  ! A row of a larger array is copied in and out by the compiler.
  subroutine read_a_row_of_an_array()
    type(RestartForm) :: f
    type(Solution) :: s
    real(real32) :: all_variables(5, total)
    integer :: v
    call write_sample(1, 0, .false., f, s)
    call set_circumstances('rows of an array', 0, .false., 1)
    do v = 1, 5
      call readnextp3dvar(v, 'restart', 0, .false., 2, [8, 3], all_variables(v:v, :), &
                          f%extents(1, :), f%extents(2, :), f%extents(3, :), 1, .true.)
    end do
    call expect(all(all_variables == real(transpose(s%flow), real32)), 'flow')
  end subroutine

  subroutine write_beside_an_existing_file()
    type(RestartForm) :: f
    real(real32) :: one(1, 1)
    integer :: u
    f = sample_form(1, 0, .false., .false.)
    open (newunit=u, file='flow000001.tmp', status='replace')
    close (u)
    one = 2.5
    call set_circumstances('existing file', 0, .false.)
    call writenextp3dvar(1, 'flow', .false., 1, [1], one, [1], [1], [1])
    call expect(tmpfile(1) == 'flow000001.tmpt', 'another name')
    open (newunit=u, file=tmpfile(1), form='unformatted', status='old')
    one = 0
    read (u) one
    close (u, status='delete')
    call expect(all(one == 2.5), 'value')
    open (newunit=u, file='flow000001.tmp', status='old')
    close (u, status='delete')
    ! The host names the file.
    tmpfile(1) = 'mine'
    open (newunit=u, file='mine', form='unformatted', status='replace')
    write (u) one
    close (u)
    call set_section(1)
    call combinep3dvarfiles(one, 'combined', 0, .false., 1, 1, [1], [1], [1], 102, .true.)
    call expect(.not. exists('mine'), 'file that the host has named')
  end subroutine

  subroutine combine_a_cut_file()
    real(real32) :: one(1, 3)
    one = 1
    call set_section(1)
    call writenextp3dvar(1, 'flow', .false., 2, [1, 2], one, [1, 2], [1, 1], [1, 1])
    call cut(trim(tmpfile(1)), 12)
    call set_circumstances('cut temporary file', 0, .false.)
    call combinep3dvarfiles(one, 'combined', 0, .false., 1, 2, [1, 2], [1, 1], [1, 1], 102, .true.)
    call expect(calls(ncalls) == 'dispfilereaderror()', 'failure')
    call expect(.not. exists(tmpfile(1)), 'temporary file that stays')
    call p3dcloseunit(301)
  end subroutine

end program
