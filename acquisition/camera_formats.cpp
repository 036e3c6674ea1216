#include "camera_formats.h"

#include <algorithm>
#include <array>

#include "frames/colour_formats.h"

namespace nerova_zel {

namespace {

struct NumberedFormat {
  std::uint32_t number;
  PixelFormat format;
};

/** From the list of PFNC values that the EMVA publishes (PFNC.h). */
constexpr std::array<NumberedFormat, 8> numbered_formats = {{{0x01080001, PixelFormat::mono8},
                                                             {0x01100003, PixelFormat::mono10},
                                                             {0x010A0046, PixelFormat::mono10p},
                                                             {0x010C0004, PixelFormat::mono10_packed},
                                                             {0x01100005, PixelFormat::mono12},
                                                             {0x010C0047, PixelFormat::mono12p},
                                                             {0x010C0006, PixelFormat::mono12_packed},
                                                             {0x01100007, PixelFormat::mono16}}};

}  // namespace

std::optional<CameraFormat> find_camera_format(const std::string& name, std::uint32_t number) {
  for (const auto& names : {pixel_format_names(), pixel_format_aliases()}) {
    for (const auto& [known, format] : names) {
      if (known == name) {
        return CameraFormat{format, std::nullopt};
      }
    }
  }
  for (const ColourFormat& known : colour_formats()) {
    if (known.name == name) {
      return CameraFormat{known.format, known.pattern};
    }
  }
  const auto* const found = std::find_if(numbered_formats.begin(), numbered_formats.end(),
                                         [number](const NumberedFormat& known) { return known.number == number; });
  return found == numbered_formats.end() ? std::nullopt : std::optional<CameraFormat>({found->format, std::nullopt});
}

}  // namespace nerova_zel
