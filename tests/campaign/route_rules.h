#pragma once

#include "reference/reference_model.h"
#include "support/cpu_route.h"

namespace nerova_zel::test {

/** The rules of the reference model that the route follows. */
inline Route rules_of(CpuRoute route) {
  switch (route) {
    case CpuRoute::Sse2:
      return Route::Sse2;
    case CpuRoute::Sse41:
      return Route::Sse41;
    default:
      return Route::PerPixel;
  }
}

}  // namespace nerova_zel::test
