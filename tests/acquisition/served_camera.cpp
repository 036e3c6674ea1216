#include "served_camera.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <string_view>

namespace nerova_zel::test {

namespace {

/** The fake camera's description with more pixel formats. */
void write_description(const std::string& file) {
  ArvFakeCamera* const fake = arv_fake_camera_new("description");
  std::size_t size = 0;
  const char* const xml = arv_fake_camera_get_genicam_xml(fake, &size);
  std::string text(xml, size);
  g_object_unref(fake);
  constexpr std::string_view first_format = "<EnumEntry Name=\"Mono8\"";
  const std::size_t at = text.find(first_format);
  ASSERT_NE(at, std::string::npos);
  std::string more;
  for (const auto& [name, number] : {std::pair<const char*, unsigned>{"Mono10p", 0x010A0046},
                                     {"Mono12p", 0x010C0047},
                                     {"Mono10Packed", 0x010C0004},
                                     {"PolarizedMono", 0x010C0047},
                                     {"BayerRGPolarized12p", 0x810C7FFF},
                                     {"Mono12Packed", 0x010C0006},
                                     {"Unheard10", 0x010A7FFF}}) {
    more += "<EnumEntry Name=\"" + std::string(name) + "\" NameSpace=\"Standard\"><Value>" + std::to_string(number) +
            "</Value></EnumEntry>\n";
  }
  std::ofstream(file) << text.insert(at, more);
}

}  // namespace

ServedCamera::ServedCamera(const std::string& folder) {
  const std::string description = folder + "/served_camera.xml";
  write_description(description);
  server_ = arv_gv_fake_camera_new_full(address, "SERVED", description.c_str());
  EXPECT_TRUE(arv_gv_fake_camera_is_running(server_));
  ArvFakeCamera* const camera = arv_gv_fake_camera_get_fake_camera(server_);
  arv_fake_camera_set_fill_pattern(camera, &ServedCamera::fill, this);
  arv_fake_camera_set_trigger_frequency(camera, 50.0);
}

void ServedCamera::end() { g_clear_object(&server_); }

std::vector<unsigned char> ServedCamera::frame_bytes(std::uint32_t number, std::size_t count) {
  std::vector<unsigned char> bytes(count);
  for (std::size_t i = 0; i < count; ++i) {
    bytes[i] = static_cast<unsigned char>((static_cast<std::uint32_t>(i) + number) * 2654435761U >> 24U);
  }
  std::memcpy(bytes.data(), &number, std::min(count, sizeof(number)));
  return bytes;
}

void ServedCamera::fill(ArvBuffer* buffer, void* camera, guint32, guint32, ArvPixelFormat format) {
  auto& self = *static_cast<ServedCamera*>(camera);
  std::size_t unused = 0;  // what was received, which is nothing here
  auto* const data = static_cast<unsigned char*>(const_cast<void*>(arv_buffer_get_data(buffer, &unused)));
  const std::size_t size = std::size_t{512} * 512 * ARV_PIXEL_FORMAT_BIT_PER_PIXEL(format) / 8;
  const std::vector<unsigned char> bytes = frame_bytes(self.repeat_ ? 0 : ++self.number_, size);
  std::copy(bytes.begin(), bytes.end(), data);
}

}  // namespace nerova_zel::test
