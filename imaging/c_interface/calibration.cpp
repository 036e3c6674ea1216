#include <algorithm>
#include <memory>
#include <optional>

#include "c_interface/frame_of.h"
#include "c_interface/guarded_call.h"
#include "calibration/calibration_file.h"
#include "calibration/series.h"

struct nv_imaging_series {
  nerova_zel::CalibrationSeries frames;
};

struct nv_imaging_calibration {
  nerova_zel::CameraCalibration calibration;
  std::string text;
  /** Of a calibration that was not read. */
  std::optional<nerova_zel::PolarizerFit> fit;
  std::string warnings;
};

namespace nerova_zel {

namespace {

constexpr const char* no_series = "there is no series";
constexpr const char* no_calibration = "there is no calibration";

RawFrame frame_of_series(const nv_imaging_series* series, const char* name, const nv_imaging_frame* frame) {
  require(series != nullptr && name != nullptr, "there is no series, or no name");
  require(frame != nullptr, "there is no frame");
  // The series says where its frames lie.
  nv_imaging_frame placed = *frame;
  placed.layout = 0;
  placed.origin_x = 0;
  placed.origin_y = 0;
  return raw_frame_of(&placed);
}

const PolarizerFit& fit_of(const nv_imaging_calibration& calibration) {
  require(calibration.fit.has_value(), "a calibration that was read has no residuals");
  return *calibration.fit;
}

nv_imaging_polarizer polarizer_of(const PolarizerFit& fit, std::size_t k) {
  const ExtinctionRatio extinction = fit.extinction(k);
  return {fit.angle_error(k),      fit.uncertainties[k].angle_degrees,
          extinction.ratio,        extinction.is_lower_bound ? 1.0 : 0.0,
          fit.responses[k].gain(), fit.residual_of(k)};
}

}  // namespace

}  // namespace nerova_zel

using namespace nerova_zel;

int32_t nv_imaging_create_series(int32_t layout, int32_t origin_x, int32_t origin_y, nv_imaging_series** series) {
  return guarded_call([&] {
    require(series != nullptr, "the series needs a place");
    require(origin_x >= 0 && origin_y >= 0, "the origin must be 0 or more");
    *series = new nv_imaging_series{CalibrationSeries(layout_of(layout), {origin_x, origin_y})};
  });
}

void nv_imaging_destroy_series(nv_imaging_series* series) { delete series; }

int32_t nv_imaging_add_to_series(nv_imaging_series* series, const char* name, double angle,
                                 const nv_imaging_frame* frame) {
  return guarded_call([&] {
    require(angle >= -360.0 && angle <= 360.0, "the angle must be -360 to 360 degrees");
    const RawFrame pixels = frame_of_series(series, name, frame);
    series->frames.add(name, angle, pixels, pixels.bit_depth);
  });
}

int32_t nv_imaging_set_dark_frame(nv_imaging_series* series, const char* name, const nv_imaging_frame* frame) {
  return guarded_call([&] {
    const RawFrame pixels = frame_of_series(series, name, frame);
    series->frames.set_dark(name, pixels, pixels.bit_depth);
  });
}

int32_t nv_imaging_fit(nv_imaging_series* series, int32_t steady, nv_imaging_calibration** calibration) {
  return guarded_call([&] {
    require(series != nullptr, no_series);
    require(calibration != nullptr, "the calibration needs a place");
    require(series->frames.size() >= 4, "a calibration needs at least four frames");
    std::vector<std::string> doubts = series->frames.check_light();
    auto result = std::make_unique<nv_imaging_calibration>();
    result->fit = series->frames.fit(steady != 0);
    const std::vector<std::string> doubtful = series->frames.doubtful_frames(*result->fit, steady != 0);
    doubts.insert(doubts.end(), doubtful.begin(), doubtful.end());
    for (const std::string& doubt : doubts) {
      result->warnings += doubt + "\n";
    }
    result->calibration = series->frames.calibration(*result->fit);
    result->text = encode_calibration(result->calibration, *result->fit);
    *calibration = result.release();
  });
}

void nv_imaging_destroy_calibration(nv_imaging_calibration* calibration) { delete calibration; }

int32_t nv_imaging_read_calibration(const char* text, size_t length, const char* name,
                                    nv_imaging_calibration** calibration) {
  return guarded_call([&] {
    require(text != nullptr && name != nullptr && calibration != nullptr, "there is no text, no name or no place");
    auto result = std::make_unique<nv_imaging_calibration>();
    result->text.assign(text, length);
    result->calibration = parse_calibration(result->text, name);
    *calibration = result.release();
  });
}

int32_t nv_imaging_read_colour_calibration(const char* text, size_t length, const char* name,
                                           nv_imaging_calibration** calibrations) {
  return guarded_call([&] {
    require(text != nullptr && name != nullptr && calibrations != nullptr, "there is no text, no name or no place");
    PerPlane<std::unique_ptr<nv_imaging_calibration>> results;
    const PerPlane<CameraCalibration> found = parse_colour_calibration(std::string(text, length), name);
    for (std::size_t i = 0; i < found.size(); ++i) {
      results[i] = std::make_unique<nv_imaging_calibration>();
      results[i]->calibration = found[i];
    }
    for (std::size_t i = 0; i < found.size(); ++i) {
      calibrations[i] = results[i].release();
    }
  });
}

int32_t nv_imaging_calibration_text(const nv_imaging_calibration* calibration, const char** text, size_t* length) {
  return guarded_call([&] {
    require(calibration != nullptr && text != nullptr, no_calibration);
    *text = calibration->text.c_str();
    if (length != nullptr) {
      *length = calibration->text.size();
    }
  });
}

int32_t nv_imaging_calibration_values(const nv_imaging_calibration* calibration, float* matrices, double* dark_levels,
                                      int32_t* bit_depth, nv_imaging_polarizer* polarizers, size_t* frames) {
  return guarded_call([&] {
    require(calibration != nullptr, no_calibration);
    const CameraCalibration& values = calibration->calibration;
    for (std::size_t k = 0; polarizers != nullptr && k < 4; ++k) {
      polarizers[k] = polarizer_of(fit_of(*calibration), k);
    }
    for (std::size_t m = 0; matrices != nullptr && m < values.matrices.size(); ++m) {
      std::copy(values.matrices[m].begin(), values.matrices[m].end(), matrices + 16 * m);
    }
    if (dark_levels != nullptr) {
      std::copy(values.dark_levels.begin(), values.dark_levels.end(), dark_levels);
    }
    if (bit_depth != nullptr) {
      *bit_depth = values.bit_depth.value_or(0);
    }
    if (frames != nullptr) {
      *frames = calibration->fit ? calibration->fit->residuals.size() : 0;
    }
  });
}

int32_t nv_imaging_calibration_residuals(const nv_imaging_calibration* calibration, double* residuals,
                                         const char** warnings) {
  return guarded_call([&] {
    require(calibration != nullptr && residuals != nullptr, no_calibration);
    for (const PerPolarizer& frame : fit_of(*calibration).residuals) {
      residuals = std::copy(frame.begin(), frame.end(), residuals);
    }
    if (warnings != nullptr) {
      *warnings = calibration->warnings.c_str();
    }
  });
}

int32_t nv_imaging_subtract_dark(const nv_imaging_calibration* calibration, const nv_imaging_frame* frame,
                                 uint16_t* result) {
  return guarded_call([&] {
    require(calibration != nullptr && result != nullptr, no_calibration);
    const Frame pixels = frame_of(frame);
    check_bit_depth(calibration->calibration, pixels.bit_depth, "the frame");
    without_dark_level(pixels.pixels.data(), {pixels.width, pixels.height},
                       {layout_of(frame->layout), {pixels.origin_x % 2, pixels.origin_y % 2}, pixels.bit_depth},
                       calibration->calibration, result);
  });
}
