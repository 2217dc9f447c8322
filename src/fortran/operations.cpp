/// The operations, for hosts in Fortran. Flags are 0 or 1; `extents` are `idim`, `jdim` and `kdim`.

#include "MOD_P3DReader.hpp"
#include "fortran/arrays.hpp"
#include "fortran/names.hpp"

namespace mod_p3dgrid::fortran {
namespace {

logical flag(integer value) {
  return value != 0;
}

template <class Real>
void read_grid(const HostName& filename, integer iformat, integer dblprec, integer& nblocks,
               integer& ndim, Descriptor xyz, Descriptor idim, Descriptor jdim, Descriptor kdim,
               Descriptor iblank, integer useiblank, integer multiblock) {
  HostArray<Real, 2> coordinates(xyz);
  HostArray<integer, 1> i(idim), j(jdim), k(kdim), blanking(iblank);
  readp3dgrid(filename, iformat, flag(dblprec), nblocks, ndim, coordinates, i, j, k, blanking,
              flag(useiblank), flag(multiblock));
}

template <class Real>
void read_restart(const HostName& filename, integer iformat, integer dblprec, integer nblocks,
                  const GivenArray& blockpoints, Descriptor varvalues, Descriptor auxvalues,
                  const GivenArray* extents, integer rsttype, integer multiblock) {
  HostArray<Real, 2> flow(varvalues), triplets(auxvalues);
  readp3drestart(filename, iformat, flag(dblprec), nblocks, blockpoints, flow, triplets, extents[0],
                 extents[1], extents[2], rsttype, flag(multiblock));
}

}  // namespace

#pragma GCC visibility push(default)

extern "C" {

void mod_p3dgrid_readp3dgrid_single(const char* filename, std::size_t length, integer iformat,
                                    integer dblprec, integer* nblocks, integer* ndim,
                                    Descriptor xyz, Descriptor idim, Descriptor jdim,
                                    Descriptor kdim, Descriptor iblank, integer useiblank,
                                    integer multiblock) {
  read_grid<float>({filename, length}, iformat, dblprec, *nblocks, *ndim, xyz, idim, jdim, kdim,
                   iblank, useiblank, multiblock);
}

void mod_p3dgrid_readp3dgrid_double(const char* filename, std::size_t length, integer iformat,
                                    integer dblprec, integer* nblocks, integer* ndim,
                                    Descriptor xyz, Descriptor idim, Descriptor jdim,
                                    Descriptor kdim, Descriptor iblank, integer useiblank,
                                    integer multiblock) {
  read_grid<double>({filename, length}, iformat, dblprec, *nblocks, *ndim, xyz, idim, jdim, kdim,
                    iblank, useiblank, multiblock);
}

/// @param npoints  null if it is absent
void mod_p3dgrid_readp3dgridheader(const char* filename, std::size_t length, integer iformat,
                                   integer* nblocks, integer* ndim, integer multiblock,
                                   integer* npoints) {
  const HostName name(filename, length);
  if (npoints == nullptr) {
    readp3dgridheader(name, iformat, *nblocks, *ndim, flag(multiblock));
  } else {
    readp3dgridheader(name, iformat, *nblocks, *ndim, flag(multiblock), *npoints);
  }
}

void mod_p3dgrid_writep3dgrid(const char* filename, std::size_t length, integer iformat,
                              integer dblprec, integer nblocks, integer ndim, const GivenArray& xyz,
                              const GivenArray* extents, const GivenArray& iblank,
                              integer useiblank, integer multiblock) {
  const HostName name(filename, length);
  with_reals(xyz, [&](auto coordinates) {
    writep3dgrid(name, iformat, flag(dblprec), nblocks, ndim, coordinates, extents[0], extents[1],
                 extents[2], iblank, flag(useiblank), flag(multiblock));
  });
}

void mod_p3dgrid_readrestartheader(const char* filename, std::size_t length, integer iformat,
                                   integer dblprec, integer* nblocks, integer rsttype,
                                   integer multiblock) {
  readrestartheader(HostName(filename, length), iformat, flag(dblprec), *nblocks, rsttype,
                    flag(multiblock));
}

void mod_p3dgrid_readrestartheader_extents(const char* filename, std::size_t length,
                                           integer iformat, integer dblprec, integer* nblocks,
                                           integer rsttype, integer multiblock, Descriptor idim,
                                           Descriptor jdim, Descriptor kdim) {
  HostArray<integer, 1> i(idim), j(jdim), k(kdim);
  readrestartheader(HostName(filename, length), iformat, flag(dblprec), *nblocks, rsttype,
                    flag(multiblock), i, j, k);
}

void mod_p3dgrid_writerestartheader(const char* filename, std::size_t length, integer iformat,
                                    integer dblprec, integer nblocks, const GivenArray* extents,
                                    integer rsttype, integer multiblock) {
  writerestartheader(HostName(filename, length), iformat, flag(dblprec), nblocks, extents[0],
                     extents[1], extents[2], rsttype, flag(multiblock));
}

void mod_p3dgrid_checkp3drstrtheader(const char* gridfile, std::size_t grid_length,
                                     integer gridformat, const char* rstfile,
                                     std::size_t rst_length, integer rstformat, integer dblprec,
                                     integer rsttype, integer multiblock) {
  const HostName grid(gridfile, grid_length);
  const HostName restart(rstfile, rst_length);
  checkp3drstrtheader(grid, gridformat, restart, rstformat, flag(dblprec), rsttype,
                      flag(multiblock));
}

void mod_p3dgrid_readp3drestart_single(const char* filename, std::size_t length, integer iformat,
                                       integer dblprec, integer nblocks,
                                       const GivenArray& blockpoints, Descriptor varvalues,
                                       Descriptor auxvalues, const GivenArray* extents,
                                       integer rsttype, integer multiblock) {
  read_restart<float>({filename, length}, iformat, dblprec, nblocks, blockpoints, varvalues,
                      auxvalues, extents, rsttype, multiblock);
}

void mod_p3dgrid_readp3drestart_double(const char* filename, std::size_t length, integer iformat,
                                       integer dblprec, integer nblocks,
                                       const GivenArray& blockpoints, Descriptor varvalues,
                                       Descriptor auxvalues, const GivenArray* extents,
                                       integer rsttype, integer multiblock) {
  read_restart<double>({filename, length}, iformat, dblprec, nblocks, blockpoints, varvalues,
                       auxvalues, extents, rsttype, multiblock);
}

void mod_p3dgrid_writep3drestart(const char* filename, std::size_t length, integer iformat,
                                 integer dblprec, integer nparamrows, integer nblocks,
                                 const GivenArray& varvalues, const GivenArray& auxvalues,
                                 const GivenArray* extents, integer rsttype, integer multiblock) {
  const HostName name(filename, length);
  const auto write = [&](auto flow, auto triplets) {
    writep3drestart(name, iformat, flag(dblprec), nparamrows, nblocks, flow, triplets, extents[0],
                    extents[1], extents[2], rsttype, flag(multiblock));
  };
  with_reals(varvalues, [&]<class Real>(array_view<const Real, 2> flow) {
    write(flow, reals<const Real>(auxvalues));
  });
}

void mod_p3dgrid_readnextp3dvar(integer ivar, const char* filename, std::size_t length,
                                integer iformat, integer dblprec, integer nblocks,
                                const GivenArray& blockpoints, const GivenArray& varvalues,
                                const GivenArray* extents, integer rsttype, integer multiblock) {
  const HostName name(filename, length);
  const auto read = [&](auto flow) {
    readnextp3dvar(ivar, name, iformat, flag(dblprec), nblocks, blockpoints, flow, extents[0],
                   extents[1], extents[2], rsttype, flag(multiblock));
  };
  if (varvalues.real_bytes == sizeof(float)) return read(reals<float>(varvalues));
  read(reals<double>(varvalues));
}

void mod_p3dgrid_writenextp3dvar(integer ivar, const char* prefix, std::size_t length,
                                 integer dblprec, integer nblocks, const GivenArray& blockpoints,
                                 const GivenArray& varvalues, const GivenArray* extents) {
  // Names of temporary files are kept by the module, which has room for 40 characters.
  const FileName name(std::string_view(prefix, length));
  with_reals(varvalues, [&](auto flow) {
    writenextp3dvar(ivar, name, flag(dblprec), nblocks, blockpoints, flow, extents[0], extents[1],
                    extents[2]);
  });
}

void mod_p3dgrid_combinep3dvarfiles(const GivenArray& leadvalues, const char* filename,
                                    std::size_t length, integer iformat, integer dblprec,
                                    integer nparamrows, integer nblocks, const GivenArray* extents,
                                    integer rsttype, integer multiblock) {
  const HostName name(filename, length);
  with_reals(leadvalues, [&](auto triplets) {
    combinep3dvarfiles(triplets, name, iformat, flag(dblprec), nparamrows, nblocks, extents[0],
                       extents[1], extents[2], rsttype, flag(multiblock));
  });
}

void mod_p3dgrid_writetecplotfile_p3d(const char* filename, std::size_t length, integer nblocks,
                                      const GivenArray& xyz, const GivenArray& qvar,
                                      const GivenArray* extents, const GivenArray& iblank,
                                      integer useiblank) {
  writetecplotfile_p3d(HostName(filename, length), nblocks, reals<const double>(xyz),
                       reals<const double>(qvar), extents[0], extents[1], extents[2], iblank,
                       flag(useiblank));
}

}  // extern "C"

#pragma GCC visibility pop

}  // namespace mod_p3dgrid::fortran
