#include "viewing/image_cut.h"

#include <cstring>

namespace nerova_zel {

namespace {

std::size_t size(int value) { return static_cast<std::size_t>(value); }

CutBytes own(std::vector<unsigned char> bytes) {
  const auto owner = std::make_shared<const std::vector<unsigned char>>(std::move(bytes));
  return {owner->data(), owner->size(), owner};
}

template <class Element>
CutBytes pick(const std::vector<Element>& image, std::size_t image_width, std::size_t channels, const Cut& cut) {
  const auto owner = std::make_shared<std::vector<Element>>(size(cut.width()) * size(cut.height()) * channels);
  Element* to = owner->data();
  for (int j = 0; j < cut.height(); ++j) {
    const Element* from =
        image.data() + channels * (size(cut.region.y + cut.step * j) * image_width + size(cut.region.x));
    if (cut.step == 1) {
      const std::size_t count = size(cut.width()) * channels;
      std::memcpy(to, from, count * sizeof(Element));
      to += count;
      continue;
    }
    for (int i = 0; i < cut.width(); ++i, from += channels * size(cut.step)) {
      for (std::size_t channel = 0; channel < channels; ++channel) {
        *to++ = from[channel];
      }
    }
  }
  return {reinterpret_cast<const unsigned char*>(owner->data()), owner->size() * sizeof(Element), owner};
}

}  // namespace

CutBytes cut_image(const std::shared_ptr<const KeptImage>& image, const Cut& cut) {
  if (cut.step == 1 && cut.region.x == 0 && cut.region.size.width == image->width) {
    const std::size_t row = size(image->width) * image->channels * image->element_bytes();
    return {image->data() + size(cut.region.y) * row, size(cut.region.size.height) * row, image};
  }
  const std::size_t width = size(image->width);
  return image->floats.empty() ? pick(image->values, width, image->channels, cut)
                               : pick(image->floats, width, image->channels, cut);
}

CutBytes cut_windows(const KeptImage& frame, const Cut& cut) {
  std::vector<unsigned char> bytes(4 * sizeof(std::uint16_t) * size(cut.width()) * size(cut.height()));
  unsigned char* to = bytes.data();
  for (int j = 0; j < cut.height(); ++j) {
    const int y = cut.region.y + cut.step * j;
    const std::uint16_t* const own_row = frame.values.data() + size(y) * size(frame.width);
    const std::uint16_t* const partner_row =
        frame.values.data() + size(y + 1 < frame.height ? y + 1 : y - 1) * size(frame.width);
    for (int i = 0; i < cut.width(); ++i) {
      const std::size_t x = size(cut.region.x + cut.step * i);
      const std::size_t partner = x + 1 < size(frame.width) ? x + 1 : x - 1;
      const std::uint16_t samples[] = {own_row[x], own_row[partner], partner_row[x], partner_row[partner]};
      std::memcpy(to, samples, sizeof samples);
      to += sizeof samples;
    }
  }
  return own(std::move(bytes));
}

}  // namespace nerova_zel
