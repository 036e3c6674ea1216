#include "calibration/calibration_file.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "failure.h"

namespace nerova_zel {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* format_name = "nerova-polarize calibration";
constexpr int format_version = 1;
constexpr const char* colours_name = "colours";

/** The double that is written with the fewest digits that still read as this float. */
double shortest(float value) {
  char text[32] = "";
  *std::to_chars(text, text + sizeof(text) - 1, value).ptr = '\0';
  double result = 0.0;
  std::from_chars(text, text + sizeof(text), result);
  return result;
}

double rounded(double value, double steps_per_unit) { return std::round(value * steps_per_unit) / steps_per_unit; }

Json matrix_to_json(const CalibrationMatrix& matrix) {
  Json rows = Json::array();
  for (std::size_t row = 0; row < 4; ++row) {
    Json numbers = Json::array();
    for (std::size_t column = 0; column < 4; ++column) {
      numbers.push_back(shortest(matrix[4 * row + column]));
    }
    rows.push_back(numbers);
  }
  return rows;
}

Json report_of(const PolarizerFit& fit) {
  Json report = Json::array();
  for (std::size_t k = 0; k < fit.responses.size(); ++k) {
    const PolarizerResponse& response = fit.responses[k];
    report.push_back({{"polarizer_degrees", 45 * k},
                      {"angle_error_degrees", rounded(fit.angle_error(k), 1e4)},
                      {"angle_standard_error_degrees", rounded(fit.uncertainties[k].angle_degrees, 1e4)},
                      {"leakage", rounded(response.leakage(), 1e7)},
                      {"leakage_standard_error", rounded(fit.uncertainties[k].leakage, 1e7)},
                      {"gain", rounded(response.gain(), 1e5)},
                      {"residual_rms", rounded(fit.residual_of(k), 1e7)}});
  }
  return report;
}

Json head_of_file() {
  return {{"format", format_name},
          {"version", format_version},
          {"rows", {"sum of intensities (twice the power)", "S1", "S2", "not used"}},
          {"columns", {"the pixel", "its horizontal neighbour", "its vertical neighbour", "its diagonal neighbour"}}};
}

Json frames_of(const PolarizerFit& fit) {
  Json frames = Json::array();
  for (std::size_t i = 0; i < fit.residuals.size(); ++i) {
    Json residuals = Json::array();
    for (const double residual : fit.residuals[i]) {
      residuals.push_back(rounded(residual, 1e7));
    }
    frames.push_back({{"angle_degrees", fit.angles[i]},
                      {"source", rounded(fit.source[i], 1e3)},
                      {"residuals", residuals},
                      {"residual_rms", rounded(fit.residual_of_frame(i), 1e7)}});
  }
  return frames;
}

Json part_of_file(const CameraCalibration& calibration, const PolarizerFit& fit) {
  Json part;
  for (const CalibrationMatrix& matrix : calibration.matrices) {
    part["matrices"].push_back(matrix_to_json(matrix));
  }
  Json levels = Json::array();
  for (const double level : calibration.dark_levels) {
    levels.push_back(rounded(level, 1e3));
  }
  part["bit_depth"] = calibration.bit_depth.value_or(16);
  part["dark"] = {{"levels", levels}};
  part["report"] = report_of(fit);
  part["common_angle_error_degrees"] = rounded(fit.common_angle_error(), 1e4);
  part["frames"] = frames_of(fit);
  return part;
}

class CalibrationReader {
 public:
  explicit CalibrationReader(const std::string& name) : name_(name) {}

  CameraCalibration read(const std::string& text) const;
  PerPlane<CameraCalibration> read_colours(const std::string& text) const;

 private:
  [[noreturn]] void refuse(const std::string& reason, Fact fact = Fact::other) const {
    throw Failure(name_ + " " + reason + ".", fact);
  }
  Json parse(const std::string& text) const;
  Json open(const std::string& text) const;
  CameraCalibration calibration(const Json& part, const std::string& place) const;
  const Json& member(const Json& object, const char* name) const;
  float weight(const Json& value, const std::string& place) const;
  CalibrationMatrix matrix(const Json& rows, const std::string& place) const;
  int bit_depth(const Json& bits) const;
  void read_dark(const Json& dark, CameraCalibration& calibration) const;

  const std::string& name_;
};

Json CalibrationReader::parse(const std::string& text) const {
  try {
    return Json::parse(text);
  } catch (const Json::parse_error& error) {
    refuse("is not JSON: it goes wrong at byte " + std::to_string(error.byte));
  } catch (const Json::exception&) {
    refuse("holds a number that is too large");
  }
}

const Json& CalibrationReader::member(const Json& object, const char* name) const {
  if (!object.is_object() || !object.contains(name)) {
    refuse("is not a calibration file: it has no \"" + std::string(name) + "\"");
  }
  return object.at(name);
}

float CalibrationReader::weight(const Json& value, const std::string& place) const {
  constexpr double greatest = 1e6;
  if (!value.is_number() || !(std::abs(value.get<double>()) <= greatest)) {
    refuse("has " + value.dump() + " in " + place + "; a number of at most a million is needed there");
  }
  return static_cast<float>(value.get<double>());
}

CalibrationMatrix CalibrationReader::matrix(const Json& rows, const std::string& place) const {
  if (!rows.is_array() || rows.size() != 4) {
    refuse("does not have 4 rows in " + place);
  }
  CalibrationMatrix result{};
  for (std::size_t row = 0; row < 4; ++row) {
    if (!rows[row].is_array() || rows[row].size() != 4) {
      refuse("does not have 4 numbers in row " + std::to_string(row) + " of " + place);
    }
    for (std::size_t column = 0; column < 4; ++column) {
      result[4 * row + column] = weight(rows[row][column], place);
    }
  }
  return result;
}

int CalibrationReader::bit_depth(const Json& bits) const {
  if (!bits.is_number_integer() || bits.get<double>() < 1 || bits.get<double>() > 16) {
    refuse("has the \"bit_depth\" " + bits.dump() + "; 1 to 16 is needed");
  }
  return bits.get<int>();
}

void CalibrationReader::read_dark(const Json& dark, CameraCalibration& calibration) const {
  if (!calibration.bit_depth) {
    calibration.bit_depth = bit_depth(member(dark, "bit_depth"));
  }
  const Json& levels = member(dark, "levels");
  const double full_scale = (1 << *calibration.bit_depth) - 1;
  if (!levels.is_array() || levels.size() != 4) {
    refuse("does not have 4 dark \"levels\"");
  }
  for (std::size_t k = 0; k < 4; ++k) {
    if (!levels[k].is_number() || !(levels[k].get<double>() >= 0.0 && levels[k].get<double>() < full_scale)) {
      refuse("has the dark level " + levels[k].dump() + "; it must lie within the pixel values");
    }
    calibration.dark_levels[k] = levels[k].get<double>();
  }
}

/** The file, if it is one that this program reads. */
Json CalibrationReader::open(const std::string& text) const {
  Json file = parse(text);
  const Json& format = member(file, "format");
  const Json& version = member(file, "version");
  if (format != format_name) {
    refuse("is not a calibration file: its \"format\" is " + format.dump());
  }
  if (version != format_version) {
    refuse("has the version " + version.dump() + "; this program reads version " + std::to_string(format_version));
  }
  return file;
}

/** Matrices and dark levels; `place` follows their names in failures. */
CameraCalibration CalibrationReader::calibration(const Json& part, const std::string& place) const {
  const Json& matrices = member(part, "matrices");
  if (!matrices.is_array() || matrices.size() != 4) {
    refuse("does not have 4 \"matrices\"" + place);
  }
  CameraCalibration calibration;
  for (std::size_t m = 0; m < 4; ++m) {
    calibration.matrices[m] = matrix(matrices[m], "matrix " + std::to_string(m) + place);
  }
  if (part.contains("bit_depth")) {
    calibration.bit_depth = bit_depth(part.at("bit_depth"));
  }
  if (part.contains("dark")) {
    read_dark(part.at("dark"), calibration);
  }
  return calibration;
}

CameraCalibration CalibrationReader::read(const std::string& text) const {
  const Json file = open(text);
  if (file.contains(colours_name)) {
    refuse("calibrates the colours of a colour sensor", Fact::colour_calibration);
  }
  return calibration(file, "");
}

PerPlane<CameraCalibration> CalibrationReader::read_colours(const std::string& text) const {
  const Json file = open(text);
  if (!file.contains(colours_name)) {
    refuse("calibrates a sensor without colours", Fact::grey_calibration);
  }
  PerPlane<CameraCalibration> calibrations;
  for (const ColourPlane plane : colour_planes) {
    const std::string name = name_of(plane);
    calibrations[static_cast<std::size_t>(plane)] =
        calibration(member(file.at(colours_name), name.c_str()), " of " + name);
  }
  return calibrations;
}

}  // namespace

std::string encode_calibration(const CameraCalibration& calibration, const PolarizerFit& fit) {
  Json file = head_of_file();
  file.update(part_of_file(calibration, fit));
  return file.dump(2) + "\n";
}

std::string encode_colour_calibration(const PerPlane<CameraCalibration>& calibrations,
                                      const PerPlane<PolarizerFit>& fits) {
  Json file = head_of_file();
  for (std::size_t i = 0; i < colour_plane_count; ++i) {
    file[colours_name][name_of(colour_planes[i])] = part_of_file(calibrations[i], fits[i]);
  }
  return file.dump(2) + "\n";
}

CameraCalibration parse_calibration(const std::string& text, const std::string& name) {
  return CalibrationReader(name).read(text);
}

PerPlane<CameraCalibration> parse_colour_calibration(const std::string& text, const std::string& name) {
  return CalibrationReader(name).read_colours(text);
}

}  // namespace nerova_zel
