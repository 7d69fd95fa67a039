// The transformation matrix of a chart from three rotation angles, as older files and the XML
// form's rotation elements give them.
#pragma once

#include <cstdint>

namespace kelpdex {

// Identity times the rotations about X, Y and Z in turn (angles in degrees), computed in doubles
// and stored as 16 little-endian floats, row by row, into `matrix` (64 bytes).
void StoreRotationMatrix(const double (&degrees)[3], uint8_t* matrix);

}  // namespace kelpdex
