#include "persist/chart_matrix.h"

#include <cmath>
#include <cstring>

#include "store/bytes.h"

namespace kelpdex {

void StoreRotationMatrix(const double (&degrees)[3], uint8_t* matrix) {
  double m[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
  for (int axis = 0; axis < 3; ++axis) {
    double a = degrees[axis] * M_PI * (1.0 / 180.0);
    double cs = std::cos(a), sn = std::sin(a);
    double r[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
    int i = (axis + 1) % 3, j = (axis + 2) % 3;
    r[i][i] = cs;
    r[i][j] = -sn;
    r[j][i] = sn;
    r[j][j] = cs;
    double t[4][4] = {};
    for (int x = 0; x < 4; ++x) {
      for (int y = 0; y < 4; ++y) {
        for (int k = 0; k < 4; ++k) t[x][y] += m[x][k] * r[k][y];
      }
    }
    std::memcpy(m, t, sizeof m);
  }
  for (int k = 0; k < 16; ++k) {
    float v = static_cast<float>(m[k / 4][k % 4]);
    uint32_t bits;
    std::memcpy(&bits, &v, 4);
    StoreU32(matrix + 4 * k, bits);
  }
}

}  // namespace kelpdex
