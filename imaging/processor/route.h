#pragma once

#include <string>

#include "processor/library.h"

namespace nerova_zel {

/** The most that the processor (CPU) offers, such as "AVX2 with FMA". */
std::string processor_level();

/** What computes frames on this computer, and which of their pixels a calibration reaches. */
std::string route_of(Library& library);

}  // namespace nerova_zel
