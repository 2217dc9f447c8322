! Writes grids, and every second point of them in i and k and every third in j:
!   coarse_peer FOLDER
! The files are FOLDER/whole-FORM-PRECISION and FOLDER/coarse-FORM-PRECISION.
program coarse_peer
  use, intrinsic :: iso_fortran_env, only: real32, real64
  use arguments
  use file_units
  implicit none
  integer, parameter :: extents(3, 2) = reshape([9, 7, 5, 5, 4, 1], [3, 2])
  character(11), parameter :: forms(2) = ['unformatted', 'binary     ']
  integer :: f

  do f = 1, size(forms)
    call write_grid(trim(forms(f)), 'whole', 1, 1)
    call write_grid(trim(forms(f)), 'coarse', 2, 3)
  end do

contains

  subroutine write_grid(form, name, two, three)
    character(*), intent(in) :: form, name
    integer, intent(in) :: two, three
    integer :: single, double, b, steps(3)
    single = opened(argument(1)//'/'//name//'-'//form//'-single', form, 'replace')
    double = opened(argument(1)//'/'//name//'-'//form//'-double', form, 'replace')
    steps = [two, three, two]
    write (single) size(extents, 2)
    write (double) size(extents, 2)
    write (single) ((extents(:, b) - 1) / steps + 1, b=1, size(extents, 2))
    write (double) ((extents(:, b) - 1) / steps + 1, b=1, size(extents, 2))
    do b = 1, size(extents, 2)
      call write_block(single, double, extents(1, b), extents(2, b), extents(3, b), two, three)
    end do
    close (single)
    close (double)
  end subroutine write_grid

  subroutine write_block(single, double, ni, nj, nk, two, three)
    integer, intent(in) :: single, double, ni, nj, nk, two, three
    real(real64) :: x(ni, nj, nk), y(ni, nj, nk), z(ni, nj, nk)
    integer :: blanks(ni, nj, nk), i, j, k
    do concurrent(i=1:ni, j=1:nj, k=1:nk)
      x(i, j, k) = i + 0.1_real64 * j
      y(i, j, k) = j - k / 3.0_real64
      z(i, j, k) = sin(real(i * j + k, real64))
      blanks(i, j, k) = mod(i + 2 * j + 3 * k, 4) - 1
    end do
    associate (xs => x(1:ni:two, 1:nj:three, 1:nk:two), ys => y(1:ni:two, 1:nj:three, 1:nk:two), &
               zs => z(1:ni:two, 1:nj:three, 1:nk:two))
      write (double) xs, ys, zs, blanks(1:ni:two, 1:nj:three, 1:nk:two)
      write (single) real(xs, real32), real(ys, real32), real(zs, real32), &
        blanks(1:ni:two, 1:nj:three, 1:nk:two)
    end associate
  end subroutine write_block

end program coarse_peer
