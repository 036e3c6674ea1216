#pragma once

#include <algorithm>
#include <cstddef>

#include "image.h"

namespace nerova_zel {

/** As many rows as make a good block for FastDeflate: 128 KiB, but at least one. */
inline std::size_t rows_per_block(std::size_t bytes_per_row) {
  return std::max<std::size_t>(1, std::size_t{128} * 1024 / bytes_per_row);
}

/** Calls write_row(row of the image, where to) for each row and add_block(bytes, size) for each full block of them. */
template <class WriteRow, class AddBlock>
void for_each_block(const ImageView& image, std::size_t bytes_per_row, const WriteRow& write_row,
                    const AddBlock& add_block) {
  const auto height = static_cast<std::size_t>(image.height);
  const std::size_t rows = std::min(height, rows_per_block(bytes_per_row));
  Bytes block(bytes_per_row * rows);
  for (std::size_t first = 0; first < height; first += rows) {
    const std::size_t count = std::min(rows, height - first);
    for (std::size_t i = 0; i < count; ++i) {
      write_row(image.row(static_cast<int>(first + i)), block.data() + i * bytes_per_row);
    }
    add_block(block.data(), count * bytes_per_row);
  }
}

}  // namespace nerova_zel
