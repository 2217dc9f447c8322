#pragma once

/// @file
/// The version of the headers and that of the library.

/// Version of the headers as text, for example "0.1.0".
#define MOD_P3DGRID_VERSION "0.1.0"
/// Major version of the headers.
#define MOD_P3DGRID_VERSION_MAJOR 0
/// Minor version of the headers; before 1.0.0 a new one may break a host.
#define MOD_P3DGRID_VERSION_MINOR 1
/// Patch version of the headers.
#define MOD_P3DGRID_VERSION_PATCH 0

#pragma GCC visibility push(default)

namespace mod_p3dgrid {

/// Version of the library that the host is linked with. It differs from `MOD_P3DGRID_VERSION` if
/// the host was compiled with the headers of another version.
[[nodiscard]] const char* p3dversion() noexcept;

}  // namespace mod_p3dgrid

#pragma GCC visibility pop
