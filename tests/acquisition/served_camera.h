#pragma once

#include <arv.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

namespace nerova_zel::test {

/** A GigE Vision camera of 512 x 512 pixels on the loopback interface, served by Aravis' own fake camera. One at a
 * time. */
class ServedCamera {
 public:
  static constexpr const char* address = "127.0.0.1";

  /** The camera's description goes to a file in the folder: with it the packed formats that the fake one lacks. */
  explicit ServedCamera(const std::string& folder);
  ~ServedCamera() { end(); }
  ServedCamera(const ServedCamera&) = delete;
  ServedCamera& operator=(const ServedCamera&) = delete;

  /** As if its cable was pulled. */
  void end();

  /** Every frame is the same from now on. */
  void repeat_frame() { repeat_ = true; }

  /** The bytes of a frame whose first four are `number`, or of a repeated one. */
  static std::vector<unsigned char> frame_bytes(std::uint32_t number, std::size_t count);

 private:
  static void fill(ArvBuffer* buffer, void* camera, guint32, guint32, ArvPixelFormat);

  ArvGvFakeCamera* server_ = nullptr;
  std::atomic<bool> repeat_{false};
  std::atomic<std::uint32_t> number_{0};
};

}  // namespace nerova_zel::test
