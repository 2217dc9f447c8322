! Every operation by keywords, without the optional arguments that it does not use.
program keywords_test
  use mod_p3dgrid
  use checks
  implicit none
  integer, parameter :: i(2) = extents(1, :), j(2) = extents(2, :), k(2) = extents(3, :)
  integer, parameter :: layout = 1

  call set_section(5)
  call p3dsetdebug(flag=.false.)
  call pass_grid()
  call pass_header()
  call pass_flow()
  call finish()

contains

  subroutine pass_grid()
    type(Grid) :: g
    real(real32), allocatable :: xyz(:, :)
    integer, allocatable :: idim(:), jdim(:), kdim(:), iblank(:)
    integer :: nblocks, ndim, npoints
    g = sample_grid(.false., .false.)
    call set_circumstances('grid by keywords', 0, .false.)
    call writep3dgrid(filename='grid', iformat=0, dblprec=.false., nblocks=2, ndim=3, &
                      xyz=transpose(g%single), idim=i, jdim=j, kdim=k, useiblank=.false., &
                      multiblock=.true.)
    call readp3dgridheader(filename='grid', iformat=0, nblocks=nblocks, ndim=ndim, &
                           multiblock=.true.)
    call expect(nblocks == 2, 'block count')
    call readp3dgridheader(filename='grid', iformat=0, nblocks=nblocks, ndim=ndim, &
                           multiblock=.true., npoints=npoints)
    call expect(npoints == total, 'points')
    call readp3dgrid(filename='grid', iformat=0, dblprec=.false., nblocks=nblocks, ndim=ndim, &
                     xyz=xyz, idim=idim, jdim=jdim, kdim=kdim, iblank=iblank, useiblank=.false., &
                     multiblock=.true.)
    call expect(all(xyz == transpose(g%single)), 'coordinates')
    call writetecplotfile_p3d(filename='flow.dat', nblocks=2, xyz=coordinates_in(g), &
                              qvar=coordinates_in(g), idim=i, jdim=j, kdim=k, useiblank=.false.)
    call p3dcloseunit(unit=594)
    call expect(exists('flow.dat'), 'Tecplot file')
  end subroutine

  subroutine pass_header()
    integer, allocatable :: idim(:), jdim(:), kdim(:)
    integer :: nblocks
    call set_circumstances('header by keywords', 0, .false., layout)
    call writerestartheader(filename='restart', iformat=0, dblprec=.false., nblocks=2, idim=i, &
                            jdim=j, kdim=k, rsttype=layout, multiblock=.true.)
    call p3dcloseunit(unit=301)
    nblocks = 0
    call readrestartheader(filename='restart', iformat=0, dblprec=.false., nblocks=nblocks, &
                           rsttype=layout, multiblock=.true.)
    call expect(nblocks == 2, 'block count')
    call readrestartheader(filename='restart', iformat=0, dblprec=.false., nblocks=nblocks, &
                           rsttype=layout, multiblock=.true., idim=idim, jdim=jdim, kdim=kdim)
    call p3dcloseunit(unit=201)
    call expect(all([idim, jdim, kdim] == [i, j, k]), 'extents')
    call checkp3drstrtheader(gridfile='grid', gridformat=0, rstfile='restart', rstformat=0, &
                             dblprec=.false., rsttype=layout, multiblock=.true.)
    call expect(count_calls('dispfilereaderror()') == 0, 'failure')
  end subroutine

  subroutine pass_flow()
    type(Solution) :: s
    real(real32), allocatable :: flow(:, :), varvalues(:, :), auxvalues(:, :), one(:, :)
    integer :: v
    s = sample_solution(sample_form(layout, 0, .false., .false.))
    flow = real(transpose(s%flow), real32)
    call set_circumstances('flow by keywords', 0, .false., layout)
    call writep3drestart(filename='restart', iformat=0, dblprec=.false., nparamrows=2, nblocks=2, &
                         varvalues=flow, idim=i, jdim=j, kdim=k, rsttype=layout, multiblock=.true.)
    call p3dcloseunit(unit=301)
    allocate (one(1, total))
    do v = 1, 5
      call readnextp3dvar(ivar=v, filename='restart', iformat=0, dblprec=.false., nblocks=2, &
                          blockpoints=[8, 3], varvalues=one, idim=i, jdim=j, kdim=k, &
                          rsttype=layout, multiblock=.true.)
      call writenextp3dvar(ivar=v, prefix='one', dblprec=.false., nblocks=2, varvalues=one, &
                           idim=i, jdim=j, kdim=k)
    end do
    call combinep3dvarfiles(leadvalues=one, filename='combined', iformat=0, dblprec=.false., &
                            nparamrows=2, nblocks=2, idim=i, jdim=j, kdim=k, rsttype=layout, &
                            multiblock=.true.)
    call readp3drestart(filename='combined', iformat=0, dblprec=.false., nblocks=2, &
                        varvalues=varvalues, auxvalues=auxvalues, idim=i, jdim=j, kdim=k, &
                        rsttype=layout, multiblock=.true.)
    call expect(all(varvalues == flow), 'flow')
  end subroutine

end program
