// The parameters of Ganz-Griesser whiteness and tint from a file.

#ifndef VRXIO_CSV_WHITENESS_FILE_H_
#define VRXIO_CSV_WHITENESS_FILE_H_

#include <string>

#include <vrxmath/colorimetry/ganz_griesser.h>

namespace vrx::io {

/// Reads the parameters of an instrument: the columns P, Q, C, m, n and k, and one row of finite numbers. Throws InputError for a
/// file that is not one.
GanzGriesser ReadGanzGriesser(const std::string& path);

}  // namespace vrx::io

#endif  // VRXIO_CSV_WHITENESS_FILE_H_
