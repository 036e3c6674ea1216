#pragma once

#include <string>

#include "processor/library.h"

namespace nerova_zel {

/** The most that the processor (CPU) offers, such as "AVX2 with FMA". */
std::string processor_level();

/**
 * Whether the route that serves this computer applies a processor's matrices to every pixel and not only to the last
 * columns and rows. Found out by a trial, because the library does not say; nobody else uses the processor meanwhile.
 * Throws ProcessorError.
 */
bool calibrates_every_pixel(Processor& processor);

/** "avx512", "avx2", "built-in SSE4.1" or "built-in SSE2"; static text. Conditions and errors as above. */
const char* route_name(Processor& processor);

/** What computes frames on this computer, and which of their pixels a calibration reaches. */
std::string route_of(Library& library);

}  // namespace nerova_zel
