! The module variables, the switches of a run, and many calls.
program run_test
  use, intrinsic :: iso_fortran_env, only: int64
  use mod_p3dgrid
  use checks
  implicit none
  character(200) :: lines(20) = ' '
  integer :: nlines = 0
  character(100) :: asked = ' '

  call set_variables()
  call use_long_names()
  call use_paths()
  call use_big_endian()
  call use_messages()
  call require_whole_records()
  call repeat_operations()
  call finish()

contains

  subroutine keep_line(line)
    character(*), intent(in) :: line
    nlines = nlines + 1
    lines(nlines) = line
  end subroutine

  subroutine path_in_folder(name, path)
    character(*), intent(in) :: name
    character(:), allocatable, intent(out) :: path
    asked = name
    path = './folder/' // name
    nstep = nstep + 1
  end subroutine

  subroutine choose_big_endian(name, coding)
    character(*), intent(in) :: name
    type(p3dcoding), intent(out) :: coding
    if (name == 'big') coding%byte_order = p3d_big_endian
    if (name == 'big') coding%marker_bytes = 8
    nstep = nstep + 1
  end subroutine

  subroutine read_sample(name, expected)
    character(*), intent(in) :: name
    type(Grid), intent(in) :: expected
    real(real32), allocatable :: xyz(:, :)
    integer, allocatable :: idim(:), jdim(:), kdim(:), iblank(:)
    integer :: nblocks, ndim
    call readp3dgrid(name, 0, .false., nblocks, ndim, xyz, idim, jdim, kdim, iblank, .false., &
                     .true.)
    call expect(all(xyz == real(coordinates_in(expected), real32)), 'coordinates of ' // name)
  end subroutine

  ! A variable that no operation touches keeps its value through the library and back.
  subroutine set_variables()
    type(RestartForm) :: f
    type(Solution) :: s
    integer :: nblocks
    call set_circumstances('variables', 0, .false.)
    call expect(debugprint .and. all(iflag == 0) .and. nstep == 0 .and. tmpfile(15) == ' ', &
                'initial')
    call expect(.not. (allocated(nfvar) .or. allocated(sqvar) .or. allocated(dqvar)), 'arrays')
    f = sample_form(1, 0, .false., .false.)
    s = sample_solution(f)
    call write_restart('restart', f, s)
    call p3dsetdebug(.false.)
    iflag = [1, 41, 999]
    eqid = 2; fileversion = 3; isgsmodel = 4; ibeta = 5; talnvar = 6
    talalfa = 1.5; talbeta = 2.5; talgam = 3.5; talpr = 4.5; talprt = 5.5; talre = 6.5
    tals1 = 7.5; talxm1 = 8.5; p3dxm1 = 9.5; p3dalfa = 10.5; p3dre = 11.5; p3dtau = 12.5
    nfvar = [7, 8, 9]
    sqvar = reshape([1.5, 2.5, 3.5, 4.5], [1, 4])
    allocate (dqvar(0, 4))
    tmpfile(15) = 'name'
    call readrestartheader('restart', 0, .false., nblocks, 1, .true.)
    call p3dcloseunit(201)
    call expect(.not. debugprint, 'debugprint')
    call expect(all(iflag == [1, 41, 999]), 'iflag')
    call expect(all([eqid, fileversion, isgsmodel, ibeta, talnvar] == [2, 3, 4, 5, 6]), 'integers')
    call expect(nstep == 1234 .and. itimeint == 0, 'step count')
    call expect(all(abs([talalfa, talbeta, talgam, talpr, talprt, talre, tals1, talxm1, p3dxm1, &
                         p3dalfa, p3dre, p3dtau] - [(1.5d0 + nblocks, nblocks=0, 11)]) < 1e-12), &
                'reals')
    call expect(size(nfvar) == 3 .and. nfvar(3) == 9, 'nfvar')
    call expect(all(shape(sqvar) == [1, 4]) .and. sqvar(1, 4) == 4.5, 'sqvar')
    call expect(allocated(dqvar) .and. all(shape(dqvar) == [0, 4]), 'dqvar')
    call expect(tmpfile(15) == 'name', 'tmpfile')
    deallocate (nfvar, sqvar, dqvar)
    call readrestartheader('restart', 0, .false., nblocks, 1, .true.)
    call p3dcloseunit(201)
    call expect(.not. (allocated(nfvar) .or. allocated(sqvar) .or. allocated(dqvar)), 'released')
  end subroutine

  ! Names of more than 40 characters, two of them with the same beginning.
  subroutine use_long_names()
    character(*), parameter :: folder = './a-folder-with-a-name-of-more-than-forty-characters/'
    type(Grid) :: g
    type(RestartForm) :: f
    type(Solution) :: s
    integer :: nblocks, ndim, npoints
    call execute_command_line('mkdir -p ' // folder // ' folder')
    g = sample_grid(.false., .false.)
    f = sample_form(2, 0, .false., .false.)
    s = sample_solution(f)
    call write_grid(folder // 'grid', 'unformatted', .true., g)
    call write_restart(folder // 'restart', f, s)
    call set_circumstances('long names', 0, .false.)
    call read_sample(folder // 'grid', g)
    call expect(index(calls(1), 'dispreadwrite(1, 10, 200, ' // folder(:40) // ', 0, ') == 1, &
                'name')
    call readp3dgridheader(folder // 'grid    ', 0, nblocks, ndim, .true., npoints)
    call expect(npoints == total, 'header')
    call checkp3drstrtheader(folder // 'grid', 0, folder // 'restart', 0, .false., 2, .true.)
    ! A short name after long ones.
    call write_grid('grid', 'unformatted', .true., g)
    call read_sample('grid', g)
    ! A name of 40 characters, and a longer one that begins with it.
    f%layout = 1
    call write_grid(folder(3:42) // '-grid', 'unformatted', .true., g)
    call write_restart(folder(3:42), f, s)
    call checkp3drstrtheader(folder(3:42) // '-grid', 0, folder(3:42), 0, .false., 1, .true.)
    ! A name of 39 characters, and a longer one that goes on with a blank.
    call write_grid(folder(3:41) // ' grid', 'unformatted', .true., g)
    call write_restart(folder(3:41), f, s)
    call checkp3drstrtheader(folder(3:41) // ' grid', 0, folder(3:41), 0, .false., 1, .true.)
    call expect(count_calls('dispfilereaderror()') == 0, 'names of 39 and 40 characters')
  end subroutine

  subroutine use_paths()
    character(*), parameter :: long = 'a-name-of-a-file-that-has-more-than-forty-characters'
    type(Grid) :: g
    g = sample_grid(.false., .false.)
    call write_grid('folder/there', 'unformatted', .true., g)
    call write_grid('folder/' // long, 'unformatted', .true., g)
    call set_circumstances('paths', 0, .false.)
    call p3dsetpaths(path_in_folder)
    nstep = 0
    call read_sample('there', g)
    call expect(asked == 'there', 'short name')
    call expect(nstep > 0, 'variable that the handler sets')
    call read_sample(long, g)
    call expect(asked == long, 'long name')
    call p3dsetpaths()
    call read_sample('folder/there', g)
    call expect(asked == long, 'handler that is removed')
  end subroutine

  subroutine use_big_endian()
    type(Grid) :: g
    integer :: u, count
    real(real32) :: xyz(3, total), x(8)
    g = sample_grid(.false., .false.)
    xyz = transpose(g%single)
    call set_circumstances('big-endian', 0, .false.)
    call p3dsetcoding(choose_big_endian)
    nstep = 0
    call writep3dgrid('big', 2, .false., 2, 3, xyz, extents(1, :), extents(2, :), extents(3, :), &
                      [0], .false., .true.)
    open (newunit=u, file='big', form='unformatted', access='stream', status='old', &
          convert='big_endian')
    read (u, pos=1) count
    read (u, pos=29) x
    close (u)
    call expect(count == 2 .and. all(x == g%single(:8, 1)), 'bytes')
    call writep3dgrid('big', 0, .false., 2, 3, xyz, extents(1, :), extents(2, :), extents(3, :), &
                      [0], .false., .true.)
    call read_sample('big', g)
    inquire (file='big', size=count)
    call expect(count == 4*16 + 4 + 24 + 11*12, 'size with markers of 8 bytes')
    call expect(nstep > 0, 'variable that the handler sets')
    call p3dsetcoding()
  end subroutine

  subroutine use_messages()
    type(Grid) :: g
    g = sample_grid(.false., .false.)
    call set_circumstances('messages', 0, .false.)
    call p3dsetmessages(keep_line)
    call p3dsetdebug(.true.)
    call read_sample('grid', g)
    call p3dsetdebug(.false.)
    call p3dsetmessages()
    call expect(nlines == 5, 'lines')
    call expect(lines(1) == ' Number of grids is 2', 'block count')
    call expect(lines(2) == ' Dimensions of grid     1 is     2    2    2', 'extents')
    call expect(lines(5) == ' Reading grid point data for grid 2', 'block')
    call expect(p3dversion() /= ' ', 'version')
    call p3dsethugepages(.true.)
    call read_sample('grid', g)
    call p3dsethugepages(.false.)
  end subroutine

  subroutine require_whole_records()
    type(Grid) :: g
    real(real32), allocatable :: xyz(:, :)
    integer, allocatable :: idim(:), jdim(:), kdim(:), iblank(:)
    integer :: nblocks, ndim
    g = sample_grid(.true., .false.)
    call write_grid('double', 'unformatted', .true., g)
    call p3dsetwholerecords(.true.)
    call set_circumstances('whole records', 0, .true.)
    call readp3dgrid('double', 0, .false., nblocks, ndim, xyz, idim, jdim, kdim, iblank, .false., &
                     .true.)
    call expect(count_calls('dispfilereaderror()') == 1, 'failure')
    call p3dcloseunit(13)
    call p3dsetwholerecords(.false.)
  end subroutine

  integer(int64) function resident_kib()
    integer :: u, status
    character(200) :: line
    resident_kib = 0
    open (newunit=u, file='/proc/self/status', status='old', action='read')
    do
      read (u, '(a)', iostat=status) line
      if (status /= 0) exit
      if (line(1:6) == 'VmRSS:') read (line(7:index(line, 'kB') - 1), *) resident_kib
    end do
    close (u)
  end function

  ! In 10,000 rounds memory must not grow by the smallest allocation in each. A memory checker finds
  ! this in the few rounds that the first argument requests.
  subroutine repeat_operations()
    integer :: round, rounds
    integer(int64) :: before
    character(10) :: argument
    call get_command_argument(1, argument)
    rounds = 10000
    if (argument /= ' ') read (argument, *) rounds
    call p3dsetmessages(drop_line)
    do round = 1, 20
      call one_round()
    end do
    before = resident_kib()
    do round = 1, rounds
      call one_round()
    end do
    call set_circumstances('memory', 0, .false.)
    call expect(rounds < 10000 .or. resident_kib() - before < 150, 'grows')
    call p3dsetmessages()
  end subroutine

  subroutine drop_line(line)
    character(*), intent(in) :: line
    asked = line
  end subroutine

  subroutine one_round()
    real(real32), allocatable :: xyz(:, :), flow(:, :), triplets(:, :)
    real(real64), allocatable :: wide(:, :)
    integer, allocatable :: idim(:), jdim(:), kdim(:), iblank(:)
    integer :: nblocks, ndim, npoints
    ncalls = 0
    call set_section(5)
    if (allocated(sqvar)) deallocate (sqvar)
    call readp3dgrid('grid', 0, .false., nblocks, ndim, xyz, idim, jdim, kdim, iblank, .false., &
                     .true.)
    call writep3dgrid('round', 0, .true., nblocks, ndim, xyz, idim, jdim, kdim, iblank, .false., &
                      .true.)
    deallocate (idim, jdim, kdim)
    call readp3dgrid('round', 0, .true., nblocks, ndim, wide, idim, jdim, kdim, iblank, .false., &
                     .true.)
    call readp3dgridheader('grid', 0, nblocks, ndim, .true., npoints)
    call readp3drestart('./folder/../a-folder-with-a-name-of-more-than-forty-characters/restart', &
                        0, .false., nblocks, [8, 3], flow, triplets, idim, jdim, kdim, 2, .true.)
    call writep3drestart('written', 0, .false., nblocks, nblocks, flow, triplets, idim, jdim, &
                         kdim, 2, .true.)
    call p3dcloseunit(301)
    call readrestartheader('written', 0, .false., nblocks, 2, .true., idim, jdim, kdim)
    call p3dcloseunit(201)
  end subroutine

end program
