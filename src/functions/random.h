// The process-wide uniform generator shared by rand, randBetween and the matrix generators: a
// combined multiplicative congruential generator after L'Ecuyer.
#pragma once

#include <cstdint>

namespace kelpdex {

// A number in the open range (0, 1).
double NextUniform();
// A seed replaces the state of its generator; a negative value keeps the stored state.
void SeedUniform(int64_t seed1, int64_t seed2);

}  // namespace kelpdex
