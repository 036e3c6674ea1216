#include "tiff_memory.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>

#include "message_text.h"

namespace nerova_zel {

std::string TiffMemory::error() const { return message_text(error_); }

TiffMemory::TiffMemory(ByteSource& input) : input_(&input) {
  open("rm");  // m: no memory mapping
}

TiffMemory::TiffMemory(Bytes& output) : output_(&output) {
  open("wl");
  if (tiff_ == nullptr) {
    throw std::bad_alloc();
  }
}

void TiffMemory::open(const char* mode) {
  TIFFOpenOptions* const options = TIFFOpenOptionsAlloc();
  if (options == nullptr) {
    throw std::bad_alloc();
  }
  TIFFOpenOptionsSetErrorHandlerExtR(options, &on_error, this);
  TIFFOpenOptionsSetWarningHandlerExtR(options, &on_warning, this);
  if (input_ != nullptr) {  // the size of a tag or strip may be a lie
    TIFFOpenOptionsSetMaxSingleMemAlloc(options, (tmsize_t{1} << 26U) + 2 * static_cast<tmsize_t>(input_->size()));
  }
  tiff_ = TIFFClientOpenExt(
      "", mode, this,
      [](thandle_t self, void* room, tmsize_t count) { return static_cast<TiffMemory*>(self)->read(room, count); },
      [](thandle_t self, void* data, tmsize_t count) { return static_cast<TiffMemory*>(self)->write(data, count); },
      [](thandle_t handle, toff_t offset, int whence) {
        auto& self = *static_cast<TiffMemory*>(handle);
        self.position_ = offset + (whence == SEEK_SET ? 0 : whence == SEEK_CUR ? self.position_ : self.size());
        return static_cast<toff_t>(self.position_);
      },
      [](thandle_t /*self*/) { return 0; },
      [](thandle_t self) { return static_cast<toff_t>(static_cast<TiffMemory*>(self)->size()); }, nullptr, nullptr,
      options);
  TIFFOpenOptionsFree(options);
}

void TiffMemory::close() {
  if (tiff_ != nullptr) {
    TIFFClose(tiff_);
    tiff_ = nullptr;
  }
}

tmsize_t TiffMemory::read(void* room, tmsize_t count) {
  std::size_t taken = 0;
  if (output_ != nullptr) {
    taken = MemorySource(*output_).read(position_, room, static_cast<std::size_t>(count));
  } else {
    try {
      taken = input_->read(position_, room, static_cast<std::size_t>(count));
    } catch (...) {  // libtiff is C
      return -1;
    }
  }
  position_ += taken;
  return static_cast<tmsize_t>(taken);
}

tmsize_t TiffMemory::write(const void* data, tmsize_t count) {
  if (output_ == nullptr) {
    return -1;
  }
  const auto* const first = static_cast<const unsigned char*>(data);
  const std::uint64_t end = position_ + static_cast<std::uint64_t>(count);
  try {
    if (position_ > output_->size()) {
      output_->resize(static_cast<std::size_t>(position_));
    }
    const auto replaced = static_cast<std::ptrdiff_t>(std::min(end, size()) - position_);
    std::copy(first, first + replaced, output_->begin() + static_cast<std::ptrdiff_t>(position_));
    output_->insert(output_->end(), first + replaced, first + count);
  } catch (...) {  // libtiff is C
    return -1;
  }
  position_ = end;
  return count;
}

int TiffMemory::on_error(TIFF* /*tiff*/, void* self, const char* /*module*/, const char* format, va_list arguments) {
  auto& memory = *static_cast<TiffMemory*>(self);
  if (memory.error_[0] == '\0') {
    std::vsnprintf(memory.error_, sizeof(memory.error_), format, arguments);
  }
  return 1;  // handled
}

int TiffMemory::on_warning(TIFF* /*tiff*/, void* /*self*/, const char* /*module*/, const char* /*format*/,
                           va_list /*arguments*/) {
  return 1;
}

}  // namespace nerova_zel
