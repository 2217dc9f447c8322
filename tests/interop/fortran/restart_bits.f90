! A flow solution in memory, and its exchange with the other side as bit patterns: one integer in
! decimal per line. All reals are doubles here, which hold every single without loss.
module restart_bits
  use, intrinsic :: iso_fortran_env, only: int32, int64, real64
  use restart_forms
  implicit none
  private
  public :: Solution, empty_solution, make_room, load_bits, save_bits

  type :: Solution
    integer(int32) :: version(2) = 0   ! file version, equation set
    integer(int32) :: run(3) = 0       ! number of variables, time integration, a switch
    integer(int32) :: nstep(1) = 0
    integer(int32) :: model(1) = 0     ! sub-grid-scale model
    integer(int32) :: flags(3) = 0     ! of the extensions of layout 101
    real(real64) :: dtau(1) = 0
    real(real64) :: talven(8) = 0      ! re, xm1, alfa, beta, gam, s1, pr, prt
    integer(int32), allocatable :: extents(:, :)      ! (3, blocks)
    integer(int32), allocatable :: counts(:)          ! variables of each block
    integer, allocatable :: first(:), last(:)         ! points of each block
    real(real64), allocatable :: parameters(:, :)     ! (4, blocks)
    real(real64), allocatable :: flow(:, :)           ! (points, variables)
    real(real64), allocatable :: triplets(:, :)       ! (points, 3)
    real(real64), allocatable :: older(:, :, :)       ! (points, variables, older level)
  end type Solution

contains

  ! A solution of nothing but the extents that the form knows.
  subroutine empty_solution(f, s)
    type(RestartForm), intent(in) :: f
    type(Solution), intent(out) :: s
    s%extents = f%extents
    allocate (s%counts(f%blocks), s%parameters(4, f%blocks))
    s%counts = 0
    s%parameters = 0
  end subroutine empty_solution

  ! Numbers the points and allocates for them, once the extents are known.
  subroutine make_room(f, s)
    type(RestartForm), intent(in) :: f
    type(Solution), intent(inout) :: s
    integer :: b, total
    ! Extents of a damaged header could ask for any amount of memory.
    if (sum(product(int(s%extents, int64), 1)) /= f%points) error stop 'another number of points'
    allocate (s%first(f%blocks), s%last(f%blocks))
    total = 0
    do b = 1, f%blocks
      s%first(b) = total + 1
      total = total + product(s%extents(:, b))
      s%last(b) = total
    end do
    allocate (s%flow(total, f%variables), s%triplets(total, 3), s%older(total, f%variables, 2))
    s%flow = 0
    s%triplets = 0
    s%older = 0
  end subroutine make_room

  subroutine load_bits(path, f, s)
    character(*), intent(in) :: path
    type(RestartForm), intent(in) :: f
    type(Solution), intent(inout) :: s
    integer :: u
    open (newunit=u, file=path, status='old', action='read', form='formatted')
    read (u, '(i20)') s%version, s%run, s%nstep, s%model, s%flags, s%extents, s%counts
    call make_room(f, s)
    s%dtau = reals(u, 1)
    s%talven = reals(u, 8)
    s%parameters = reshape(reals(u, size(s%parameters)), shape(s%parameters))
    s%flow = reshape(reals(u, size(s%flow)), shape(s%flow))
    s%triplets = reshape(reals(u, size(s%triplets)), shape(s%triplets))
    s%older = reshape(reals(u, size(s%older)), shape(s%older))
    close (u)
  end subroutine load_bits

  function reals(u, count)
    integer, intent(in) :: u, count
    real(real64) :: reals(count)
    integer(int64) :: bits(count)
    if (count > 0) read (u, '(i20)') bits
    reals = transfer(bits, reals)
  end function reals

  subroutine save_bits(path, s)
    character(*), intent(in) :: path
    type(Solution), intent(in) :: s
    integer :: u
    open (newunit=u, file=path, status='replace', action='write', form='formatted')
    write (u, '(i0)') s%version, s%run, s%nstep, s%model, s%flags, s%extents, s%counts, &
      transfer(s%dtau, [0_int64]), transfer(s%talven, [0_int64]), &
      transfer(s%parameters, [0_int64]), transfer(s%flow, [0_int64]), &
      transfer(s%triplets, [0_int64]), transfer(s%older, [0_int64])
    close (u)
  end subroutine save_bits

end module restart_bits
