#pragma once

#include <cstdint>

#include "log_client.h"
#include "processor.h"

namespace nerova_zel {

/** The arguments of the public transform function, unchecked. */
struct TransformArguments {
  const Processor* processor;
  PolarPhase phase;  ///< for an origin at even coordinates
  const std::uint16_t* input;
  std::int32_t origin_x;
  std::int32_t origin_y;
  std::int32_t width;
  std::int32_t height;
  std::int32_t bit_depth;
  std::uint16_t output_maximum;
  OutputImages images;
};

/** Checks, computes and writes the time it took as a record; returns the public function's code. */
std::int32_t transform(const LogClient& client, const TransformArguments& arguments) noexcept;

}  // namespace nerova_zel
