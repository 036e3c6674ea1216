#pragma once

#include <memory>
#include <string>

#include "nerova_zel/polarization_processor.hpp"
#include "processor/dynamic_module.h"

namespace nerova_zel {

/** The polarization processor library, opened at run time, with one processor. Throws Failure. */
class Library {
 public:
  /**
   * Opens the library at `path`; if empty, the one that lies where it was installed or in ../lib beside the program or
   * in the program's own directory, else whatever the system's ordinary search finds.
   */
  explicit Library(const std::string& path);

  /** Where it was opened, or the name that the system found it by. */
  const std::string& path() const { return path_; }

  /** The version that its file states; empty if it states none. */
  std::string version() const { return module_.version(); }

  /** Thread-safe. On more than one thread the frame is computed in bands, with the same bits. */
  void transform(const Frame& frame, const Outputs& outputs, int threads = 1) const;

  /** Not while another thread transforms. */
  void set_calibration(const Calibration& matrices);

  /** The matrices in force. */
  Calibration calibration() const;

  /**
   * Whether the route that serves this computer applies the matrices to every pixel and not only to the last columns
   * and rows. Found out by a trial, because the library does not say. Not while another thread transforms.
   */
  bool calibrates_every_pixel();

 private:
  std::string path_;
  DynamicModule module_;
  Processor processor_;
};

}  // namespace nerova_zel
