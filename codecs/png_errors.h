#pragma once

#include <png.h>

#include <cstring>

namespace nerova_zel {

/**
 * libpng reports errors by longjmp, which skips destructors. So everything with a destructor lives in an object of this
 * kind, outside of succeeds(), and what runs inside of succeeds() holds plain values only.
 */
class PngErrors {
 protected:
  template <class Action>
  bool succeeds(const Action& action) {
    if (setjmp(png_jmpbuf(png_)) != 0) {
      return false;
    }
    action();
    return true;
  }

  [[noreturn]] static void on_error(png_structp png, png_const_charp message) {
    auto& self = *static_cast<PngErrors*>(png_get_error_ptr(png));
    std::strncpy(self.message_, message, sizeof(self.message_) - 1);
    png_longjmp(png, 1);
  }

  static void on_warning(png_structp /*png*/, png_const_charp /*message*/) {}

  png_structp png_ = nullptr;  ///< made with this object, as PngErrors, for its error pointer
  png_infop info_ = nullptr;
  char message_[128] = "";
};

}  // namespace nerova_zel
