// Images of frames, and the route they take.
#include "c_interface/frame_of.h"
#include "c_interface/guarded_call.h"
#include "processor/frame_images.h"
#include "processor/route.h"

using namespace nerova_zel;

int32_t nv_imaging_transform(nv_polarization_processor* processor, const nv_imaging_frame* frame,
                             const nv_imaging_images* images, int32_t threads) {
  return guarded_call([&] {
    const Frame input = frame_of(frame);
    require(images != nullptr, "there are no images");
    require(threads >= 1, "threads must be 1 or more");
    require(images->output_maximum >= 1 && images->output_maximum <= 65535, "the output maximum must be 1 to 65535");
    const ImageBuffers buffers{{images->stokes, images->power, images->hv, images->diagonal, images->azimuth,
                                images->dolp, static_cast<std::uint16_t>(images->output_maximum)},
                               {images->s0, images->s1, images->s2},
                               images->angle};
    require(images->stokes != nullptr || images->power != nullptr || images->hv != nullptr ||
                images->diagonal != nullptr || images->azimuth != nullptr || images->dolp != nullptr ||
                images->s0 != nullptr || images->s1 != nullptr || images->s2 != nullptr || images->angle != nullptr,
            "no image is wanted");
    Calibration matrices{};
    const std::int32_t code = nv_polarization_processor_get_custom_calibration_coefficients(
        processor, matrices[0].data(), matrices[1].data(), matrices[2].data(), matrices[3].data());
    if (code != NV_POLARIZATION_PROCESSOR_SUCCESS) {
      throw ProcessorError(code);
    }
    compute_images(transform_call(processor), matrices, input, buffers, threads);
  });
}

int32_t nv_imaging_route(const char** name) {
  return guarded_call([&] {
    require(name != nullptr, "the route's name needs a place");
    Processor processor;
    *name = route_name(processor);
  });
}
