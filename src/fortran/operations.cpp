/// The operations, for hosts in Fortran. Flags are 0 or 1. The sizes of arrays follow them: `sizes`
/// are those of `idim`, `jdim` and `kdim`.

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
  allocatable<Real, 2>& result = coordinates;
  readp3dgrid(filename, iformat, flag(dblprec), nblocks, ndim, result, i, j, k, blanking,
              flag(useiblank), flag(multiblock));
}

template <class Real>
void read_restart(const HostName& filename, integer iformat, integer dblprec, integer nblocks,
                  integer_view blockpoints, Descriptor varvalues, Descriptor auxvalues,
                  integer_view idim, integer_view jdim, integer_view kdim, integer rsttype,
                  integer multiblock) {
  HostArray<Real, 2> flow(varvalues), triplets(auxvalues);
  allocatable<Real, 2>& flow_result = flow;
  allocatable<Real, 2>& triplet_result = triplets;
  readp3drestart(filename, iformat, flag(dblprec), nblocks, blockpoints, flow_result,
                 triplet_result, idim, jdim, kdim, rsttype, flag(multiblock));
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
                              integer dblprec, integer nblocks, integer ndim, integer real_bytes,
                              const void* xyz, const std::int64_t* shape, const integer* idim,
                              const integer* jdim, const integer* kdim, const std::int64_t* sizes,
                              const integer* iblank, std::int64_t blanking_size, integer useiblank,
                              integer multiblock) {
  const HostName name(filename, length);
  with_reals(real_bytes, xyz, shape, [&](auto coordinates) {
    writep3dgrid(name, iformat, flag(dblprec), nblocks, ndim, coordinates, view(idim, sizes[0]),
                 view(jdim, sizes[1]), view(kdim, sizes[2]), view(iblank, blanking_size),
                 flag(useiblank), flag(multiblock));
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
                                    integer dblprec, integer nblocks, const integer* idim,
                                    const integer* jdim, const integer* kdim,
                                    const std::int64_t* sizes, integer rsttype,
                                    integer multiblock) {
  writerestartheader(HostName(filename, length), iformat, flag(dblprec), nblocks,
                     view(idim, sizes[0]), view(jdim, sizes[1]), view(kdim, sizes[2]), rsttype,
                     flag(multiblock));
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
                                       integer dblprec, integer nblocks, const integer* blockpoints,
                                       std::int64_t points_size, Descriptor varvalues,
                                       Descriptor auxvalues, const integer* idim,
                                       const integer* jdim, const integer* kdim,
                                       const std::int64_t* sizes, integer rsttype,
                                       integer multiblock) {
  read_restart<float>({filename, length}, iformat, dblprec, nblocks, view(blockpoints, points_size),
                      varvalues, auxvalues, view(idim, sizes[0]), view(jdim, sizes[1]),
                      view(kdim, sizes[2]), rsttype, multiblock);
}

void mod_p3dgrid_readp3drestart_double(const char* filename, std::size_t length, integer iformat,
                                       integer dblprec, integer nblocks, const integer* blockpoints,
                                       std::int64_t points_size, Descriptor varvalues,
                                       Descriptor auxvalues, const integer* idim,
                                       const integer* jdim, const integer* kdim,
                                       const std::int64_t* sizes, integer rsttype,
                                       integer multiblock) {
  read_restart<double>({filename, length}, iformat, dblprec, nblocks,
                       view(blockpoints, points_size), varvalues, auxvalues, view(idim, sizes[0]),
                       view(jdim, sizes[1]), view(kdim, sizes[2]), rsttype, multiblock);
}

void mod_p3dgrid_writep3drestart(const char* filename, std::size_t length, integer iformat,
                                 integer dblprec, integer nparamrows, integer nblocks,
                                 integer real_bytes, const void* varvalues,
                                 const std::int64_t* shape, const void* auxvalues,
                                 const std::int64_t* aux_shape, const integer* idim,
                                 const integer* jdim, const integer* kdim,
                                 const std::int64_t* sizes, integer rsttype, integer multiblock) {
  const HostName name(filename, length);
  const auto write = [&](auto flow, auto triplets) {
    writep3drestart(name, iformat, flag(dblprec), nparamrows, nblocks, flow, triplets,
                    view(idim, sizes[0]), view(jdim, sizes[1]), view(kdim, sizes[2]), rsttype,
                    flag(multiblock));
  };
  with_reals(real_bytes, varvalues, shape, [&]<class Real>(array_view<const Real, 2> flow) {
    write(flow, view(static_cast<const Real*>(auxvalues), aux_shape));
  });
}

void mod_p3dgrid_readnextp3dvar(integer ivar, const char* filename, std::size_t length,
                                integer iformat, integer dblprec, integer nblocks,
                                const integer* blockpoints, std::int64_t points_size,
                                integer real_bytes, void* varvalues, const std::int64_t* shape,
                                const integer* idim, const integer* jdim, const integer* kdim,
                                const std::int64_t* sizes, integer rsttype, integer multiblock) {
  const HostName name(filename, length);
  const auto read = [&](auto flow) {
    readnextp3dvar(ivar, name, iformat, flag(dblprec), nblocks, view(blockpoints, points_size),
                   flow, view(idim, sizes[0]), view(jdim, sizes[1]), view(kdim, sizes[2]), rsttype,
                   flag(multiblock));
  };
  if (real_bytes == sizeof(float)) return read(view(static_cast<float*>(varvalues), shape));
  read(view(static_cast<double*>(varvalues), shape));
}

void mod_p3dgrid_writenextp3dvar(integer ivar, const char* prefix, std::size_t length,
                                 integer dblprec, integer nblocks, const integer* blockpoints,
                                 std::int64_t points_size, integer real_bytes,
                                 const void* varvalues, const std::int64_t* shape,
                                 const integer* idim, const integer* jdim, const integer* kdim,
                                 const std::int64_t* sizes) {
  // Names of temporary files are kept by the module, which has room for 40 characters.
  const FileName name(std::string_view(prefix, length));
  with_reals(real_bytes, varvalues, shape, [&](auto flow) {
    writenextp3dvar(ivar, name, flag(dblprec), nblocks, view(blockpoints, points_size), flow,
                    view(idim, sizes[0]), view(jdim, sizes[1]), view(kdim, sizes[2]));
  });
}

void mod_p3dgrid_combinep3dvarfiles(integer real_bytes, const void* leadvalues,
                                    const std::int64_t* shape, const char* filename,
                                    std::size_t length, integer iformat, integer dblprec,
                                    integer nparamrows, integer nblocks, const integer* idim,
                                    const integer* jdim, const integer* kdim,
                                    const std::int64_t* sizes, integer rsttype,
                                    integer multiblock) {
  const HostName name(filename, length);
  with_reals(real_bytes, leadvalues, shape, [&](auto triplets) {
    combinep3dvarfiles(triplets, name, iformat, flag(dblprec), nparamrows, nblocks,
                       view(idim, sizes[0]), view(jdim, sizes[1]), view(kdim, sizes[2]), rsttype,
                       flag(multiblock));
  });
}

void mod_p3dgrid_writetecplotfile_p3d(const char* filename, std::size_t length, integer nblocks,
                                      const double* xyz, const std::int64_t* shape,
                                      const double* qvar, const std::int64_t* flow_shape,
                                      const integer* idim, const integer* jdim, const integer* kdim,
                                      const std::int64_t* sizes, const integer* iblank,
                                      std::int64_t blanking_size, integer useiblank) {
  writetecplotfile_p3d(HostName(filename, length), nblocks, view(xyz, shape),
                       view(qvar, flow_shape), view(idim, sizes[0]), view(jdim, sizes[1]),
                       view(kdim, sizes[2]), view(iblank, blanking_size), flag(useiblank));
}

}  // extern "C"

#pragma GCC visibility pop

}  // namespace mod_p3dgrid::fortran
