#include "kernels/shared/image_view.h"

namespace nerova_zel {

ImageViews make_image_views(const TransformParameters& parameters) {
  const auto rows = static_cast<std::uint32_t>(parameters.height);
  const auto columns = static_cast<std::uint32_t>(parameters.width);
  return {{parameters.input, rows, columns},
          {parameters.total_power, rows, columns},
          {parameters.horizontal_vertical, rows, columns},
          {parameters.diagonal, rows, columns},
          {parameters.azimuth, rows, columns},
          {parameters.degree_of_linear_polarization, rows, columns}};
}

}  // namespace nerova_zel
