#pragma once

// Results are bit for bit the same in every build, so no option may let the compiler change them.
#if defined(__FAST_MATH__) || (defined(__FINITE_MATH_ONLY__) && __FINITE_MATH_ONLY__ != 0) || \
    defined(__ASSOCIATIVE_MATH__) || defined(__RECIPROCAL_MATH__) || defined(__NO_SIGNED_ZEROS__)
#error "The polarization processor cannot be built with -ffast-math or a part of it: its results would change."
#endif
