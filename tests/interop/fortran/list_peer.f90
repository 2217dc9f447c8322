! The Fortran side of the list-directed reading tests.
!   list_peer CASES RESULTS
! CASES has one line per case: the path of a text file (up to column 200), then one letter per read
! to make of it. For each read RESULTS gets a line: the case, the status class (0 done, 1 end of
! file, 2 error), and the bits of all destinations. A case ends with its first read that fails.
program list_peer
  use, intrinsic :: iso_fortran_env, only: int32, int64, real32, real64
  implicit none
  integer, parameter :: path_length = 200
  integer(int32) :: i(8)
  real(real32) :: r(3, 4)
  real(real64) :: d(8)
  character(1000) :: cases_path, results_path
  character(path_length) :: path
  character(16) :: reads
  integer :: cases, results, number, status

  call get_command_argument(1, cases_path)
  call get_command_argument(2, results_path)
  open (newunit=cases, file=cases_path, status='old', action='read', form='formatted')
  open (newunit=results, file=results_path, status='replace', action='write', form='formatted')
  number = 0
  do
    read (cases, '(a, a)', iostat=status) path, reads
    if (status /= 0) exit
    call run_case(number, path, trim(reads))
    number = number + 1
  end do

contains

  ! The presets tell what a read has left alone.
  subroutine preset()
    integer :: n
    i = [(-7770 - n, n=1, 8)]
    r = reshape(transfer([(1241513984_int32 + n, n=1, 12)], r), [3, 4])
    d = transfer([(5044031582654955520_int64 + n, n=1, 8)], d)
  end subroutine preset

  subroutine run_case(case_number, file, letters)
    integer, intent(in) :: case_number
    character(*), intent(in) :: file, letters
    integer :: u, n, outcome
    call preset()
    open (newunit=u, file=file, status='old', action='read', form='formatted')
    do n = 1, len(letters)
      call read_record(u, letters(n:n), outcome)
      call save(case_number, outcome)
      if (outcome /= 0) exit
    end do
    close (u)
  end subroutine run_case

  subroutine read_record(u, letter, outcome)
    integer, intent(in) :: u
    character(1), intent(in) :: letter
    integer, intent(out) :: outcome
    select case (letter)
    case ('i'); read (u, *, iostat=outcome) i(1:5)
    case ('r'); read (u, *, iostat=outcome) r(1, 1:4), r(2, 1:2)
    case ('d'); read (u, *, iostat=outcome) d(1:6)
    case ('m'); read (u, *, iostat=outcome) i(1:3), r(1, 1:4), i(4:5), d(1:2)
    case ('g'); read (u, *, iostat=outcome) r(1, :), r(2, :), r(3, :), i(1:4)
    case ('s'); read (u, *, iostat=outcome) i(1)
    case ('x'); read (u, *, iostat=outcome) r(1, 1)
    case ('e'); read (u, *, iostat=outcome)
    case default; error stop 'unknown read'
    end select
  end subroutine read_record

  subroutine save(case_number, outcome)
    integer, intent(in) :: case_number, outcome
    integer :: status_class
    status_class = 0
    if (outcome /= 0) status_class = merge(1, 2, is_iostat_end(outcome))
    write (results, '(*(i0, 1x))') case_number, status_class, i, transfer(r, [0_int32]), &
      transfer(d, [0_int64])
  end subroutine save

end program list_peer
