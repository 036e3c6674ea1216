#include "kernels/shared/image_view.h"

namespace nerova_zel {

ImageViews make_image_views(const TransformParameters& parameters) {
  const auto rows = static_cast<std::uint32_t>(parameters.height);
  const auto columns = static_cast<std::uint32_t>(parameters.width);
  ImageViews views = {{parameters.input, rows, columns}, {}};
  Outputs::for_each([&](auto output) {
    if constexpr (!output.is_pair) {
      views.outputs[output_index<decltype(output)>] = {parameters.images.*output.image, rows, columns};
    }
  });
  return views;
}

}  // namespace nerova_zel
