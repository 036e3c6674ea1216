#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>

#include "reference/reference_model.h"

namespace nerova_zel::test {

constexpr std::size_t output_count = 1 + CodeImageCount;

/** Addresses of the outputs in the order of the interface; NULL for those that are not wanted. */
using OutputPointers = std::array<void*, output_count>;

/** In the order of the interface. */
const char* output_name(std::size_t output);

/** Where the images first differ in a bit, in words, or nothing; any NaN equals any other. NULL is not compared. */
std::optional<std::string> first_difference(const OutputImages& reference, const OutputPointers& outputs, int width);

}  // namespace nerova_zel::test
