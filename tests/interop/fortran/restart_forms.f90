! How a restart file holds its solution, as the other side describes it.
module restart_forms
  use, intrinsic :: iso_fortran_env, only: int32
  implicit none
  private
  public :: RestartForm, load_form

  integer, parameter :: most_sections = 30, most_blocks = 100

  type :: RestartForm
    integer :: layout = -1
    character(11) :: encoding = ''
    logical :: is_double = .false.    ! of reals that may be either; in text of the flow only
    logical :: multiblock = .false.   ! layouts 2 and 3: a block count stands first
    logical :: leading = .false.      ! layouts 100 and 101: blocks begin with the triplets
    logical :: planar = .false.       ! layouts 2 and 3: two dimensions, without the third momentum
    integer :: blocks = 0
    integer :: points = 0             ! of all blocks
    integer :: variables = 0          ! columns of the flow
    integer :: sections = 0
    integer :: section(2, most_sections) = 0        ! first and last variable of each
    integer(int32), allocatable :: extents(:, :)    ! (3, blocks), for layouts that hold none
  end type RestartForm

contains

  subroutine load_form(path, f)
    character(*), intent(in) :: path
    type(RestartForm), intent(out) :: f
    integer :: u, layout, blocks, points, variables, sections, section(2, most_sections)
    integer(int32) :: extents(3, most_blocks)
    character(11) :: encoding
    logical :: is_double, multiblock, leading, planar
    namelist /form/ layout, encoding, is_double, multiblock, leading, planar, blocks, points, &
      variables, sections, section, extents
    section = 0
    extents = 0
    open (newunit=u, file=path, status='old', action='read', form='formatted')
    read (u, nml=form)
    close (u)
    f = RestartForm(layout, encoding, is_double, multiblock, leading, planar, blocks, points, &
                    variables, sections, section, extents(:, :blocks))
  end subroutine load_form

end module restart_forms
