#pragma once

#include "transform_request.h"

namespace nerova_zel {

/** Transforms frames, writes the wanted outputs and prints a line about each. Throws Failure. */
void run_transform(const TransformOptions& options);

}  // namespace nerova_zel
