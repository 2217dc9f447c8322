! readp3drestart and writep3drestart, compared with plain Fortran.
program read_restart_test
  use mod_p3dgrid
  use checks
  implicit none
  integer, parameter :: layouts(7) = [0, 1, 2, 3, 100, 101, 102]
  integer :: n, iformat, precision
  ! Whether a read of layout 100 has left its staging array, for singles (1) and doubles (2).
  logical :: left_over(2) = .false.

  call p3dsetdebug(.false.)
  do n = 1, size(layouts)
    do iformat = 0, 2
      do precision = 0, 1
        call read_into_singles(layouts(n), iformat, precision == 1)
        call read_into_doubles(layouts(n), iformat, precision == 1)
        if (layouts(n) == 0) cycle
        call write_singles(layouts(n), iformat, precision == 1)
        call write_doubles(layouts(n), iformat, precision == 1)
      end do
    end do
  end do
  call read_header_alone()
  call read_cut_file()
  call change_the_table_in_a_callback()
  call finish()

contains

  ! Single-precision records of layout 100 are read as ordinary sections.
  logical function has_triplets(layout, iformat, is_double)
    integer, intent(in) :: layout, iformat
    logical, intent(in) :: is_double
    has_triplets = layout == 101 .or. (layout == 100 .and. (is_double .or. iformat == text))
  end function

  subroutine write_sample(layout, iformat, is_double, f, s)
    integer, intent(in) :: layout, iformat
    logical, intent(in) :: is_double
    type(RestartForm), intent(out) :: f
    type(Solution), intent(out) :: s
    f = sample_form(layout, iformat, is_double, has_triplets(layout, iformat, is_double))
    s = sample_solution(f)
    call write_restart('restart', f, s)
    call set_section(5)
    if (layout == 3) numrstrtvar = 0
    if (allocated(nfvar)) deallocate (nfvar)
    if (allocated(sqvar)) deallocate (sqvar)
    if (allocated(dqvar)) deallocate (dqvar)
  end subroutine

  ! `kind` is that of the staging array, 0 for none.
  subroutine expect_calls_of_read(layout, iformat, is_double, kind)
    integer, intent(in) :: layout, iformat
    logical, intent(in) :: is_double
    integer, intent(in) :: kind
    character(longest_call) :: expected(10)
    integer :: count, codes(2)
    codes = [20, 300]
    if (layout == 2) codes = [40, 200]
    if (layout == 3) codes = [50, 200]
    write (expected(1), '(a, 2(i0, ", "), a, i0, 7a)') 'dispreadwrite(1, ', codes, 'restart, ', &
      iformat, ', ', shown(is_double), ', -, -, T, -, -)'
    expected(2:) = 'checkallocationerror(0)'
    ! The extents and the flow; what the layout adds; the staging array of the flow.
    count = 3 + merge(1, 0, any(layout == [2, 3, 100, 101])) + merge(1, 0, layout == 101) &
            + merge(1, 0, kind > 0)
    ! Known: layout 100 leaves a staging array, and layout 101 allocates the triplets once more.
    if (kind > 0 .and. layout == 100) then
      if (left_over(kind)) expected(count - 1) = 'checkallocationerror(1)'
      left_over(kind) = .true.
    end if
    if (kind > 0 .and. layout == 101) then
      if (left_over(kind)) expected(count - 1) = 'checkallocationerror(1)'
      left_over(kind) = .false.
      expected(count) = 'checkallocationerror(1)'
      count = count + 1
    end if
    call expect_calls(expected(:count))
  end subroutine

  ! Beyond the flow: the variables that the operation sets.
  subroutine expect_variables(layout, iformat, is_double, s)
    integer, intent(in) :: layout, iformat
    logical, intent(in) :: is_double
    type(Solution), intent(in) :: s
    call expect(numrstrtvar(1) == 5 .and. all(numrstrtvar(2:) == 0), 'numrstrtvar')
    if (layout /= 2) return
    call expect(allocated(dqvar) .eqv. (is_double .or. iformat == text), 'allocation of dqvar')
    call expect(allocated(sqvar) .neqv. allocated(dqvar), 'allocation of sqvar')
    if (allocated(dqvar)) call expect(all(dqvar == transpose(s%parameters)), 'dqvar')
    if (allocated(sqvar)) call expect(all(sqvar == real(transpose(s%parameters), real32)), 'sqvar')
    if (iformat /= text) then
      call expect(all([p3dxm1, p3dalfa, p3dre, p3dtau] == s%parameters(:, 2)), 'parameters')
    end if
  end subroutine

  subroutine read_into_singles(layout, iformat, is_double)
    integer, intent(in) :: layout, iformat
    logical, intent(in) :: is_double
    type(RestartForm) :: f
    type(Solution) :: s
    real(real32), allocatable :: varvalues(:, :), auxvalues(:, :)
    integer, allocatable :: blockpoints(:)
    call write_sample(layout, iformat, is_double, f, s)
    call set_circumstances('read into singles', iformat, is_double, layout)
    call readp3drestart('restart', iformat, is_double, f%blocks, blockpoints, varvalues, &
                        auxvalues, f%extents(1, :), f%extents(2, :), f%extents(3, :), layout, &
                        .true.)
    call expect_calls_of_read(layout, iformat, is_double, &
                              merge(2, 0, is_double .and. iformat /= text))
    call expect_variables(layout, iformat, is_double, s)
    call expect(all(shape(varvalues) == [5, f%points]), 'shape')
    if (iformat == text .and. is_double) return
    call expect(all(varvalues == real(transpose(s%flow), real32)), 'flow')
    if (.not. has_triplets(layout, iformat, is_double)) return
    if (layout == 100 .and. iformat /= text) return  ! known quirk: they are not read
    call expect(all(auxvalues == real(transpose(s%triplets), real32)), 'triplets')
  end subroutine

  subroutine read_into_doubles(layout, iformat, is_double)
    integer, intent(in) :: layout, iformat
    logical, intent(in) :: is_double
    type(RestartForm) :: f
    type(Solution) :: s
    real(real64), allocatable :: varvalues(:, :), auxvalues(:, :)
    integer :: blockpoints(2)
    blockpoints = [8, 3]
    call write_sample(layout, iformat, is_double, f, s)
    call set_circumstances('read into doubles', iformat, is_double, layout)
    call readp3drestart('restart', iformat, is_double, f%blocks, blockpoints, varvalues, &
                        auxvalues, f%extents(1, :), f%extents(2, :), f%extents(3, :), layout, &
                        .true.)
    call expect_calls_of_read(layout, iformat, is_double, &
                              merge(1, 0, .not. is_double .and. iformat /= text))
    call expect_variables(layout, iformat, is_double, s)
    call expect(all(shape(varvalues) == [5, f%points]), 'shape')
    if (iformat == text .and. .not. is_double) return
    call expect(all(varvalues == transpose(s%flow)), 'flow')
    if (.not. has_triplets(layout, iformat, is_double)) return
    call expect(all(auxvalues == transpose(s%triplets)), 'triplets')
  end subroutine

  subroutine prepare_to_write(layout, iformat, is_double, f, s)
    integer, intent(in) :: layout, iformat
    logical, intent(in) :: is_double
    type(RestartForm), intent(out) :: f
    type(Solution), intent(out) :: s
    integer :: b
    f = sample_form(layout, iformat, is_double, layout == 100 .or. layout == 101)
    s = sample_solution(f)
    call set_section(5)
    nstep = 1234
    dtau = 0.5
    iflag = [999, 0, 0]
    nfvar = [(5, b=1, f%blocks)]
    if (allocated(sqvar)) deallocate (sqvar)
    dqvar = transpose(s%parameters)
  end subroutine

  subroutine expect_file(f, expected)
    type(RestartForm), intent(in) :: f
    type(Solution), intent(in) :: expected
    type(Solution) :: s
    call empty_solution(f, s)
    call read_restart('written', f, s)
    call expect(all(s%flow == expected%flow), 'flow')
    if (f%leading) call expect(all(s%triplets == expected%triplets), 'triplets')
    if (f%layout == 2) call expect(all(s%parameters == expected%parameters), 'parameters')
    if (any(f%layout == [1, 100, 101])) call expect(s%nstep(1) == 1234, 'steps')
    if (f%layout <= 3) call expect(all(s%extents == f%extents), 'extents')
  end subroutine

  subroutine write_singles(layout, iformat, is_double)
    integer, intent(in) :: layout, iformat
    logical, intent(in) :: is_double
    type(RestartForm) :: f
    type(Solution) :: s
    real(real32), allocatable :: flow(:, :), triplets(:, :)
    call prepare_to_write(layout, iformat, is_double, f, s)
    flow = real(transpose(s%flow), real32)
    if (f%leading) triplets = real(transpose(s%triplets), real32)  ! else not allocated
    call set_circumstances('write singles', iformat, is_double, layout)
    call writep3drestart('written', iformat, is_double, f%blocks, f%blocks, flow, triplets, &
                         f%extents(1, :), f%extents(2, :), f%extents(3, :), layout, .true.)
    call p3dcloseunit(301)
    s%flow = transpose(real(flow, real64))
    if (f%leading) s%triplets = transpose(real(triplets, real64))
    if (iformat == text) f%is_double = .false.
    call expect_file(f, s)
  end subroutine

  subroutine write_doubles(layout, iformat, is_double)
    integer, intent(in) :: layout, iformat
    logical, intent(in) :: is_double
    type(RestartForm) :: f
    type(Solution) :: s
    real(real64), allocatable :: flow(:, :), triplets(:, :)
    call prepare_to_write(layout, iformat, is_double, f, s)
    flow = transpose(s%flow)
    if (f%leading) triplets = transpose(s%triplets)
    call set_circumstances('write doubles', iformat, is_double, layout)
    call writep3drestart('written', iformat, is_double, f%blocks, f%blocks, flow, triplets, &
                         f%extents(1, :), f%extents(2, :), f%extents(3, :), layout, .true.)
    call p3dcloseunit(301)
    if (iformat == text) f%is_double = .true.
    call expect_file(f, s)
  end subroutine

  subroutine read_header_alone()
    type(RestartForm) :: f
    type(Solution) :: s
    real(real32), allocatable :: varvalues(:, :), auxvalues(:, :)
    call write_sample(1, 0, .false., f, s)
    readallvars = .false.
    call set_circumstances('header alone', 0, .false., 1)
    call readp3drestart('restart', 0, .false., 2, [8, 3], varvalues, auxvalues, f%extents(1, :), &
                        f%extents(2, :), f%extents(3, :), 1, .true.)
    call expect(all(shape(varvalues) == [1, total]), 'shape')
    call expect(.not. allocated(auxvalues), 'triplets')
    call expect(nstep == 1234, 'steps')
  end subroutine

  subroutine read_cut_file()
    type(RestartForm) :: f
    type(Solution) :: s
    real(real32), allocatable :: varvalues(:, :), auxvalues(:, :)
    call write_sample(1, 0, .false., f, s)
    call cut('restart', 20 + 2*20 + 4 + 8*4 + 10)
    call set_circumstances('cut file', 0, .false., 1)
    call readp3drestart('restart', 0, .false., 2, [8, 3], varvalues, auxvalues, f%extents(1, :), &
                        f%extents(2, :), f%extents(3, :), 1, .true.)
    call expect(calls(ncalls) == 'dispfilereaderror()', 'failure')
    call expect(count_calls('dispfilereaderror()') == 1, 'one failure')
    call expect(all(varvalues(1, :8) == real(s%flow(:8, 1), real32)), 'flow before the cut')
    call p3dcloseunit(201)
  end subroutine

  ! The library reads the variables that the host changes, and the host those that the library sets.
  subroutine change_the_table_in_a_callback()
    type(RestartForm) :: f
    type(Solution) :: s
    real(real32), allocatable :: varvalues(:, :), auxvalues(:, :)
    call write_sample(3, 0, .false., f, s)
    call set_circumstances('table in a callback', 0, .false., 3)
    call readp3drestart('restart', 0, .false., 2, [8, 3], varvalues, auxvalues, f%extents(1, :), &
                        f%extents(2, :), f%extents(3, :), 3, .true.)
    call expect(count_when_called == 5, 'count that the library has set')
    deallocate (varvalues)
    call write_sample(102, 0, .false., f, s)
    new_count = 6
    call readp3drestart('restart', 0, .false., 1, [8], varvalues, auxvalues, f%extents(1, :), &
                        f%extents(2, :), f%extents(3, :), 102, .true.)
    new_count = 0
    call expect(size(varvalues, 1) == 6, 'count that the host has set')
  end subroutine

end program
