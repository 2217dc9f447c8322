! The arrays to write, read from a source file.
module source
  use support
  implicit none

contains

  subroutine load_source(path, extents, xyz, flow)
    character(*), intent(in) :: path
    integer(int32), allocatable, intent(out) :: extents(:, :)
    real(real32), allocatable, intent(out) :: xyz(:, :)
    real(real32), allocatable, intent(out), optional :: flow(:, :)
    integer(int32), allocatable :: columns(:, :)
    integer(int32) :: blocks
    integer :: u, points
    open (newunit=u, file=path, form='unformatted', access='stream', status='old', action='read')
    read (u) blocks
    allocate (columns(blocks, 3))
    read (u) columns
    extents = transpose(columns)
    points = sum(product(extents, 1))
    allocate (xyz(3, points))
    read (u) xyz
    if (present(flow)) then
      allocate (flow(variables, points))
      read (u) flow
    end if
    close (u)
  end subroutine

end module
