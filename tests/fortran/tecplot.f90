! writetecplotfile_p3d, read back by plain Fortran.
program tecplot_test
  use mod_p3dgrid
  use checks
  implicit none
  call write_and_read(.false.)
  call write_and_read(.true.)
  call finish()

contains

  subroutine write_and_read(has_iblank)
    logical, intent(in) :: has_iblank
    real(real64) :: xyz(3, total), wide(5, 2*total), line(8)
    integer, allocatable :: iblank(:)
    integer :: u, b, p, point, blank
    character(100) :: header
    do p = 1, total
      do b = 1, 3
        xyz(b, p) = coordinate(b, p)
      end do
      do b = 1, 5
        wide(b, 2*p) = flow_value(b, p)
      end do
    end do
    if (has_iblank) iblank = [(p, p=1, total)]
    call set_circumstances('tecplot', text, .true.)
    call writetecplotfile_p3d('flow.dat', 2, xyz, wide(:, 2::2), extents(1, :), extents(2, :), &
                              extents(3, :), iblank, has_iblank)
    call p3dcloseunit(594)
    call expect(ncalls == 0, 'calls')
    open (newunit=u, file='flow.dat', status='old')
    read (u, '(a)') header
    call expect(header == ' VARIABLES = "X", "Y", "Z", "U", "V", "W", "P", "RHO"' // &
                trim(merge(',"IBLANK"', '         ', has_iblank)), 'names')
    point = 0
    do b = 1, 2
      read (u, '(a)') header
      if (b == 1) call expect(header == 'ZONE T="ZONE-000001" I=0002 J=0002 K=0002', 'zone')
      do p = 1, product(extents(:, b))
        point = point + 1
        if (has_iblank) read (u, *) line, blank
        if (.not. has_iblank) read (u, *) line
        call expect(all(line(:3) == xyz(:, point)), 'coordinates')
        call expect(all(line(4:) == wide(:, 2*point)), 'flow')
        if (has_iblank) call expect(blank == point, 'blanking')
      end do
    end do
    close (u)
  end subroutine

end program
