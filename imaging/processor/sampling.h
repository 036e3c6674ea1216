#pragma once

#include "processor/frame_images.h"

namespace nerova_zel {

/** How the samples of the four polarizers come together in a pixel of the images. docs/sampling.md compares them. */
enum class Sampling {
  window,      ///< the library's: the 2 x 2 samples that begin at the pixel, images as large as the frame
  superpixel,  ///< of these only every second in both directions, which share no sample: images of half the size
  bilinear,    ///< the mean of P, S1 and S2 over the four windows that hold the pixel, before anything is made of them
};

/** The planes of P, S1 and S2 that bilinear images are made of. */
struct WindowPlanes {
  const float* s0;
  const float* s1;
  const float* s2;
  int width;   ///< at least 2
  int height;  ///< at least 2
};

/**
 * Bilinear images from the planes of the windows, with accurate arithmetic in place of the library's estimates. 16-bit
 * images are clamped and rounded as the library's are; `full_scale` is that of the pixels, `power_scale` that of P.
 */
void compute_bilinear(const WindowPlanes& windows, double full_scale, double power_scale, const ImageBuffers& images);

}  // namespace nerova_zel
