! Layout 101 with variable extensions, compared with plain Fortran: variables 6 to 10 and 11 to 13
! follow the five of the section.
program extensions_test
  use mod_p3dgrid
  use checks
  implicit none
  integer, parameter :: layout = 101, variables = 13, chain(3) = [1, 41, 999]
  integer :: iformat, precision

  call p3dsetdebug(.false.)
  do iformat = 0, 2
    do precision = 0, 1
      call pass_singles(iformat, precision == 1)
      call pass_doubles(iformat, precision == 1)
    end do
  end do
  call finish()

contains

  subroutine write_sample(iformat, is_double, f, s)
    integer, intent(in) :: iformat
    logical, intent(in) :: is_double
    type(RestartForm), intent(out) :: f
    type(Solution), intent(out) :: s
    f = sample_form(layout, iformat, is_double, .true.)
    f%variables = variables
    s = sample_solution(f)
    s%flags = chain
    call write_restart('extended', f, s)
    call set_section(5)
    iflag = 0
  end subroutine

  subroutine pass_singles(iformat, is_double)
    integer, intent(in) :: iformat
    logical, intent(in) :: is_double
    type(RestartForm) :: f
    type(Solution) :: s
    real(real32), allocatable :: flow(:, :), triplets(:, :), one(:, :)
    integer :: v
    if (iformat == text .and. is_double) return
    call write_sample(iformat, is_double, f, s)
    call set_circumstances('extensions in singles', iformat, is_double)
    call readp3drestart('extended', iformat, is_double, 1, [8], flow, triplets, [2], [2], [2], &
                        layout, .true.)
    call expect_table()
    call expect(all(shape(flow) == [variables, 8]), 'shape')
    call expect(all(flow == real(transpose(s%flow), real32)), 'flow')
    call expect(all(triplets == real(transpose(s%triplets), real32)), 'triplets')
    call writep3drestart('written', iformat, is_double, 1, 1, flow, triplets, [2], [2], [2], &
                         layout, .true.)
    call p3dcloseunit(301)
    s%flow = transpose(real(flow, real64))
    s%triplets = transpose(real(triplets, real64))
    call expect_file('written', f, s)
    allocate (one(1, 8))
    do v = 1, variables
      call readnextp3dvar(v, 'extended', iformat, is_double, 1, [8], one, [2], [2], [2], layout, &
                          .true.)
      call expect(all(one(1, :) == flow(v, :)), 'one variable')
      call writenextp3dvar(v, 'one', is_double .or. iformat == text, 1, [8], one, [2], [2], [2])
    end do
    call combinep3dvarfiles(triplets, 'combined', iformat, is_double .or. iformat == text, 1, 1, &
                            [2], [2], [2], layout, .true.)
    call expect_file('combined', f, s)
  end subroutine

  subroutine pass_doubles(iformat, is_double)
    integer, intent(in) :: iformat
    logical, intent(in) :: is_double
    type(RestartForm) :: f
    type(Solution) :: s
    real(real64), allocatable :: flow(:, :), triplets(:, :), one(:, :)
    integer :: v
    if (iformat == text .and. .not. is_double) return
    call write_sample(iformat, is_double, f, s)
    call set_circumstances('extensions in doubles', iformat, is_double)
    call readp3drestart('extended', iformat, is_double, 1, [8], flow, triplets, [2], [2], [2], &
                        layout, .true.)
    call expect_table()
    call expect(all(shape(flow) == [variables, 8]), 'shape')
    call expect(all(flow == transpose(s%flow)), 'flow')
    call expect(all(triplets == transpose(s%triplets)), 'triplets')
    call writep3drestart('written', iformat, is_double, 1, 1, flow, triplets, [2], [2], [2], &
                         layout, .true.)
    call p3dcloseunit(301)
    call expect_file('written', f, s)
    allocate (one(1, 8))
    do v = 1, variables
      call readnextp3dvar(v, 'extended', iformat, is_double, 1, [8], one, [2], [2], [2], layout, &
                          .true.)
      call expect(all(one(1, :) == flow(v, :)), 'one variable')
      call writenextp3dvar(v, 'one', is_double, 1, [8], one, [2], [2], [2])
    end do
    call combinep3dvarfiles(triplets, 'combined', iformat, is_double, 1, 1, [2], [2], [2], layout, &
                            .true.)
    call expect_file('combined', f, s)
  end subroutine

  ! Sections: five variables, and the eight of the extensions.
  subroutine expect_table()
    call expect(all(iflag == chain), 'flags')
    call expect(all(numrstrtvar(:2) == [5, 8]), 'numrstrtvar')
  end subroutine

  subroutine expect_file(path, f, expected)
    character(*), intent(in) :: path
    type(RestartForm), intent(in) :: f
    type(Solution), intent(in) :: expected
    type(Solution) :: s
    call empty_solution(f, s)
    call read_restart(path, f, s)
    call expect(all(s%flags == chain), 'flags in ' // path)
    call expect(all(s%flow == expected%flow), 'flow in ' // path)
    call expect(all(s%triplets == expected%triplets), 'triplets in ' // path)
  end subroutine

end program
