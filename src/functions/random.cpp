#include "functions/random.h"

namespace kelpdex {

namespace {

int64_t state1 = 123456;
int64_t state2 = 654321;

// a * s mod m without overflow, by Schrage's method.
int64_t Schrage(int64_t s, int64_t a, int64_t m) {
  int64_t q = m / a;
  int64_t r = m % a;
  int64_t k = s / q;
  s = a * (s - k * q) - k * r;
  return s < 0 ? s + m : s;
}

}  // namespace

double NextUniform() {
  state1 = Schrage(state1, 40014, 2147483563);
  state2 = Schrage(state2, 40692, 2147483399);
  int64_t z = state1 - state2;
  if (z < 1) z += 2147483562;
  return static_cast<double>(z) * 4.656613057391769e-10;
}

void SeedUniform(int64_t seed1, int64_t seed2) {
  if (seed1 >= 0) state1 = seed1;
  if (seed2 >= 0) state2 = seed2;
}

}  // namespace kelpdex
