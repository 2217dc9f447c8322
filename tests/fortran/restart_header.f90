! readrestartheader, writerestartheader and checkp3drstrtheader.
program restart_header_test
  use mod_p3dgrid
  use checks
  implicit none
  integer, parameter :: layouts(7) = [0, 1, 2, 3, 100, 101, 102]
  integer :: n, iformat, precision
  character(100) :: lines(20) = ' '
  integer :: nlines = 0

  do n = 1, size(layouts)
    do iformat = 0, 2
      do precision = 0, 1
        call read_header(layouts(n), iformat, precision == 1)
        if (layouts(n) /= 0) call write_header(layouts(n), iformat, precision == 1)
      end do
    end do
  end do
  call check_matching_files()
  call read_cut_header()
  call finish()

contains

  subroutine read_header(layout, iformat, is_double)
    integer, intent(in) :: layout, iformat
    logical, intent(in) :: is_double
    type(RestartForm) :: f
    type(Solution) :: s
    integer :: nblocks
    integer, allocatable :: idim(:), jdim(:), kdim(:)
    logical :: has_extents
    f = sample_form(layout, iformat, is_double, .false.)
    s = sample_solution(f)
    call write_restart('restart', f, s)
    call set_section(5)
    call set_circumstances('read header', iformat, is_double, layout)
    nstep = 0
    dtau = 0
    if (allocated(nfvar)) deallocate (nfvar)
    nblocks = 1
    call readrestartheader('restart', iformat, is_double, nblocks, layout, .true., idim, jdim, kdim)
    call p3dcloseunit(201)
    has_extents = layout <= 3
    call expect(nblocks == f%blocks, 'block count')
    call expect(size(idim) == nblocks .and. size(kdim) == nblocks, 'sizes')
    if (has_extents) call expect(all(idim == f%extents(1, :)), 'i extents')
    if (has_extents) call expect(all(jdim == f%extents(2, :)), 'j extents')
    if (.not. has_extents) call expect(all(kdim == 0), 'extents that the file does not hold')
    if (any(layout == [0, 1, 100, 101])) then
      call expect(nstep == 1234 .and. abs(dtau - 0.5) < 1e-12, 'steps')
    end if
    call expect(allocated(nfvar) .eqv. layout == 3, 'allocation of nfvar')
    if (layout == 3) call expect(all(nfvar == 5), 'nfvar')
    if (layout == 0) then
      call expect(fileversion == 3 .and. eqid == s%version(2), 'version')
      call expect(talnvar == 5 .and. itimeint == 0 .and. ibeta == 1, 'run')
    end if
    if (layout == 0 .and. eqid == 1) then
      call expect(isgsmodel == 6, 'model')
      call expect(all([talre, talxm1, talalfa, talbeta, talgam, tals1, talpr, talprt] &
                      == s%talven), 'flow parameters')
    end if
    ! Without the extents.
    call readrestartheader('restart', iformat, is_double, nblocks, layout, .true.)
    call p3dcloseunit(201)
    call expect(nblocks == f%blocks, 'block count without extents')
    call expect(count_calls('dispfilereaderror()') == 0, 'failure')
  end subroutine

  subroutine write_header(layout, iformat, is_double)
    integer, intent(in) :: layout, iformat
    logical, intent(in) :: is_double
    type(RestartForm) :: f
    integer :: nblocks
    integer, allocatable :: idim(:), jdim(:), kdim(:)
    f = sample_form(layout, iformat, is_double, .false.)
    call set_circumstances('write header', iformat, is_double, layout)
    nstep = 77
    dtau = 0.25
    nfvar = [(5, nblocks=1, f%blocks)]
    call writerestartheader('written', iformat, is_double, f%blocks, f%extents(1, :), &
                            f%extents(2, :), f%extents(3, :), layout, .true.)
    call p3dcloseunit(301)
    if (layout == 102) return
    call expect_header(layout, iformat, is_double, f)
    nstep = 0
    nblocks = 1
    call readrestartheader('written', iformat, is_double, nblocks, layout, .true., idim, jdim, kdim)
    call p3dcloseunit(201)
    call expect(nblocks == f%blocks, 'block count')
    if (any(layout == [1, 100, 101])) call expect(nstep == 77, 'steps')
  end subroutine

  ! The header as plain Fortran reads it.
  subroutine expect_header(layout, iformat, is_double, f)
    integer, intent(in) :: layout, iformat
    logical, intent(in) :: is_double
    type(RestartForm), intent(in) :: f
    integer :: u, steps, blocks, list(3)
    real(real64) :: wide
    real(real32) :: narrow
    if (iformat == text .or. .not. any(layout == [1, 2, 100])) return
    if (iformat == 0) open (newunit=u, file='written', form='unformatted', status='old')
    if (iformat == 2) open (newunit=u, file='written', form='unformatted', access='stream', &
                            status='old')
    if (layout == 2) then
      read (u) blocks
    else if (is_double) then
      read (u) steps, wide, blocks
      call expect(steps == 77 .and. abs(wide - 0.25) < 1e-12, 'steps in the file')
    else
      read (u) steps, narrow, blocks
      call expect(steps == 77 .and. abs(narrow - 0.25) < 1e-6, 'steps in the file')
    end if
    call expect(blocks == f%blocks, 'block count in the file')
    if (layout /= 100) then
      read (u) list
      call expect(all(list == f%extents(:, 1)), 'extents in the file')
    end if
    close (u)
  end subroutine

  subroutine keep_line(line)
    character(*), intent(in) :: line
    nlines = nlines + 1
    lines(nlines) = line
  end subroutine

  subroutine check_matching_files()
    type(RestartForm) :: f
    type(Solution) :: s
    type(Grid) :: g
    f = sample_form(2, 0, .false., .false.)
    s = sample_solution(f)
    g = sample_grid(.false., .false.)
    call write_restart('restart', f, s)
    call write_grid('grid', 'unformatted', .true., g)
    call set_circumstances('check', 0, .false.)
    call p3dsetmessages(keep_line)
    call checkp3drstrtheader('grid', 0, 'restart', 0, .false., 2, .true.)
    call p3dsetmessages()
    call expect_calls(['checkallocationerror(0)', 'checkallocationerror(0)'])
    call expect(nlines == 0, 'messages')
  end subroutine

  subroutine read_cut_header()
    type(RestartForm) :: f
    type(Solution) :: s
    integer :: nblocks
    f = sample_form(1, 0, .true., .false.)
    s = sample_solution(f)
    call write_restart('restart', f, s)
    call cut('restart', 10)
    call set_circumstances('cut header', 0, .true., 1)
    nstep = 3
    nblocks = 1
    call readrestartheader('restart', 0, .true., nblocks, 1, .true.)
    call expect(ncalls == 1 .and. calls(1) == 'dispfilereaderror()', 'one failure')
    call p3dcloseunit(201)
  end subroutine

end program
