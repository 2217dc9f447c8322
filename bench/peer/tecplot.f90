! A Tecplot text file: a line for each point.
module tecplot
  use support
  use source
  implicit none

contains

  subroutine write_tecplot(r, seconds)
    type(request), intent(in) :: r
    real(real64), intent(out) :: seconds
    real(real32), allocatable :: xyz(:, :), q(:, :)
    integer(int32), allocatable :: extents(:, :)
    real(real64), allocatable :: dxyz(:, :), dq(:, :)
    call load_source(r%input, extents, xyz, q)
    dxyz = xyz
    dq = q
    deallocate (xyz, q)
    seconds = clock()
    call write_zones(r, extents, dxyz, dq)
    seconds = clock() - seconds
  end subroutine

  subroutine write_zones(r, extents, xyz, q)
    type(request), intent(in) :: r
    integer(int32), intent(in) :: extents(:, :)
    real(real64), intent(in) :: xyz(:, :), q(:, :)
    integer :: u, b, s, e, i
    ! The default record length would break the line of a point.
    open (newunit=u, file=r%output, form='formatted', status='unknown', action='write', recl=1000)
    write (u, *) 'VARIABLES = "X", "Y", "Z", "U", "V", "W", "P", "RHO"'
    e = 0
    do b = 1, size(extents, 2)
      s = e + 1
      e = e + product(extents(:, b))
      write (u, '(a,i6.6,a,i4.4,a,i4.4,a,i4.4)') 'ZONE T="ZONE-', b, '" I=', extents(1, b), &
        ' J=', extents(2, b), ' K=', extents(3, b)
      do i = s, e
        write (u, *) xyz(:, i), q(:, i)
      end do
    end do
    close (u)
  end subroutine

end module
