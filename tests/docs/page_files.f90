! Writes and reads the example files of docs/formats.md. Writes f-NAME for each file of records, and
! prints the name of each text that has the expected values.
program page_files
  use, intrinsic :: iso_fortran_env, only: real32, real64
  implicit none
  integer, parameter :: steps = 400
  real(real32), parameter :: step_size = 0.25
  integer, parameter :: ni(2) = [2, 1], nj(2) = [2, 1], nk(2) = [1, 2], first(2) = [0, 4]
  integer :: u, b, i, j, k, p, v

  call write_grids()
  call write_layouts_0_and_1()
  call write_layouts_2_and_3()
  call write_layouts_100_and_up()
  call write_planes()
  call check_grid('grid.txt')
  call check_grid('typed.txt')
  call check_solution('layout-2.txt')

contains

  real function x(b, i)
    integer, intent(in) :: b, i
    x = i - 1 + 2 * (b - 1)
  end function

  real function y(j)
    integer, intent(in) :: j
    y = 0.5 * (j - 1)
  end function

  real function z(k)
    integer, intent(in) :: k
    z = k - 0.75
  end function

  integer function blanking(i, j)
    integer, intent(in) :: i, j
    blanking = merge(0, 1, i == 2 .and. j == 2)
  end function

  ! The values of variables `from` to `to` at the points of block b; below 0 are the triplets.
  function flow(b, from, to, points) result(values)
    integer, intent(in) :: b, from, to, points
    real(real32) :: values(points * (to - from + 1))
    values = [((sign(10 * abs(v) + first(b) + p, v), p = 1, points), v = from, to)]
  end function

  ! The three values of a point, component after component.
  function triplets(points) result(values)
    integer, intent(in) :: points
    real(real32) :: values(3 * points)
    values = [flow(1, -1, -1, points), flow(1, -2, -2, points), flow(1, -3, -3, points)]
  end function

  subroutine create(name, stream)
    character(*), intent(in) :: name
    logical, intent(in) :: stream
    if (stream) then
      open(newunit=u, file='f-'//name, form='unformatted', access='stream', status='replace', &
           convert='little_endian')
    else
      open(newunit=u, file='f-'//name, form='unformatted', status='replace', &
           convert='little_endian')
    end if
  end subroutine

  ! Files of two dimensions.
  subroutine write_planes()
    call create('plane.p3d', .false.)
    write(u) 1
    write(u) 2, 2
    write(u) ((x(1, i), i = 1, 2), j = 1, 2), ((y(j), i = 1, 2), j = 1, 2)
    close(u)
    call create('plane.q', .true.)
    write(u) 1, 2, 2, real([0.5, 2., 1e6, 0.25], real64)
    write(u) real([flow(1, 1, 3, 4), flow(1, 5, 5, 4)], real64)
    close(u)
  end subroutine

  subroutine write_grids()
    call create('grid.p3d', .false.)
    write(u) 2
    write(u) (ni(b), nj(b), nk(b), b = 1, 2)
    do b = 1, 2
      write(u) (((x(b, i), i = 1, ni(b)), j = 1, nj(b)), k = 1, nk(b)), &
               (((y(j), i = 1, ni(b)), j = 1, nj(b)), k = 1, nk(b)), &
               (((z(k), i = 1, ni(b)), j = 1, nj(b)), k = 1, nk(b))
    end do
    close(u)
    call create('split.p3d', .false.)
    write(u) 2, 1, 1
    write(u) (x(1, i), i = 1, 2), (y(1), i = 1, 2), (z(1), i = 1, 2)
    close(u)
    call create('plain.bin', .true.)
    write(u) 2, 1, 1, (real(x(1, i), real64), i = 1, 2), (real(y(1), real64), i = 1, 2), &
             (real(z(1), real64), i = 1, 2), (blanking(i, 1), i = 1, 2)
    close(u)
  end subroutine

  subroutine write_layouts_0_and_1()
    call create('layout-0.rst', .false.)
    write(u) 3, 1
    write(u) 1, 2, 2, 0, steps, real(step_size, real64)
    write(u) 1, 1e6_real64, 0.5_real64, 2.0_real64, 0.0_real64, 1.4_real64, 7.0_real64, &
             0.72_real64, 0.9_real64
    write(u) 2, 1, 1
    write(u) real(flow(1, 1, 2, 2), real64)
    write(u) [(9.0_real64, i = 1, 4)]
    close(u)
    call create('layout-1.rst', .false.)
    write(u) steps, step_size, 2
    do b = 1, 2
      write(u) ni(b), nj(b), nk(b)
    end do
    do b = 1, 2
      write(u) flow(b, 1, 2, ni(b) * nj(b) * nk(b))
      write(u) flow(b, 3, 3, ni(b) * nj(b) * nk(b))
    end do
    close(u)
  end subroutine

  subroutine write_layouts_2_and_3()
    call create('layout-2.q', .false.)
    write(u) 2
    write(u) (ni(b), nj(b), nk(b), b = 1, 2)
    do b = 1, 2
      write(u) 0.5_real32, 2.0_real32, 1e6_real32, 0.25_real32 * b
      write(u) flow(b, 1, 5, ni(b) * nj(b) * nk(b))
    end do
    close(u)
    call create('layout-3.f', .true.)
    write(u) 2, (ni(b), nj(b), nk(b), 2, b = 1, 2)
    write(u) flow(1, 1, 2, 4), flow(2, 1, 2, 2)
    close(u)
  end subroutine

  subroutine write_layouts_100_and_up()
    call create('layout-100.rst', .true.)
    write(u) steps, real(step_size, real64), 1, real(triplets(2), real64), &
             real(flow(1, 1, 5, 2), real64), real(flow(1, 6, 6, 2), real64)
    close(u)
    call create('layout-101.rst', .false.)
    write(u) 2, 1, 1, steps, step_size
    write(u) triplets(2), flow(1, 1, 5, 2)
    write(u) 41
    write(u) flow(1, 6, 8, 2)
    write(u) 999
    close(u)
    call create('layout-102.rst', .true.)
    write(u) real(flow(1, 1, 2, 2), real64), real(flow(1, 3, 3, 2), real64)
    close(u)
  end subroutine

  subroutine expect(good)
    logical, intent(in) :: good
    if (.not. good) error stop 'a text holds something else'
  end subroutine

  subroutine check_grid(name)
    character(*), intent(in) :: name
    integer :: blocks, extents(3, 2)
    real :: xyz(2, 2, 2, 3)
    integer :: used(2, 2, 2)
    open(newunit=u, file=name, status='old', action='read')
    read(u, *) blocks
    read(u, *) extents
    call expect(blocks == 2 .and. all(extents == reshape([2, 2, 1, 1, 1, 2], [3, 2])))
    do b = 1, 2
      xyz = 0
      used = 1
      read(u, *) xyz(:ni(b), :nj(b), :nk(b), :), used(:ni(b), :nj(b), :nk(b))
      do k = 1, nk(b)
        do j = 1, nj(b)
          do i = 1, ni(b)
            call expect(all(xyz(i, j, k, :) == [x(b, i), y(j), z(k)]))
            call expect(used(i, j, k) == blanking(i, j))
          end do
        end do
      end do
    end do
    close(u)
    print '(a)', name
  end subroutine

  subroutine check_solution(name)
    character(*), intent(in) :: name
    integer :: blocks, extents(3, 2), points
    real :: parameters(4), values(20)
    open(newunit=u, file=name, status='old', action='read')
    read(u, *) blocks
    read(u, *) extents
    call expect(blocks == 2 .and. all(extents == reshape([2, 2, 1, 1, 1, 2], [3, 2])))
    do b = 1, 2
      points = ni(b) * nj(b) * nk(b)
      read(u, *) parameters
      call expect(all(parameters == [0.5, 2.0, 1e6, 0.25 * b]))
      read(u, *) values(:5 * points)
      call expect(all(values(:5 * points) == flow(b, 1, 5, points)))
    end do
    close(u)
    print '(a)', name
  end subroutine
end program
