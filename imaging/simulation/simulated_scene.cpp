#include "simulation/simulated_scene.h"

#include <algorithm>
#include <cmath>

#include "angles.h"

namespace nerova_zel {

namespace {

/** Radiance of the surroundings; below 1 so that photon noise rarely saturates a pixel. */
constexpr double surroundings = 0.85;

struct Reflectances {
  double s;  ///< light that swings across the plane of incidence
  double p;  ///< light that swings within it
};

/** Fresnel equations for a dielectric in air: E. Hecht, "Optics", section 4.6.2. */
Reflectances fresnel(double cos_incidence, double refractive_index) {
  const double sin_refraction_squared = (1.0 - cos_incidence * cos_incidence) / (refractive_index * refractive_index);
  const double cos_refraction = std::sqrt(1.0 - sin_refraction_squared);
  const double rs =
      (cos_incidence - refractive_index * cos_refraction) / (cos_incidence + refractive_index * cos_refraction);
  const double rp =
      (refractive_index * cos_incidence - cos_refraction) / (refractive_index * cos_incidence + cos_refraction);
  return {rs * rs, rp * rp};
}

/** Light of power `across` swinging across the direction `angle` (radians) and of power `along` swinging along it. */
StokesVector two_beams(double along, double across, double angle) {
  const double polarized = along - across;
  return {along + across, polarized * std::cos(2.0 * angle), polarized * std::sin(2.0 * angle)};
}

}  // namespace

double StokesVector::degree() const { return s0 > 0.0 ? length_of(s1, s2) / s0 : 0.0; }

double StokesVector::angle_degrees() const {
  const double angle = 0.5 * std::atan2(s2, s1) * 180.0 / pi;
  return angle < 0.0 ? angle + 180.0 : angle;
}

double StokesVector::behind_polarizer(double angle_degrees) const {
  const double twice = 2.0 * angle_degrees * pi / 180.0;
  return 0.5 * (s0 + s1 * std::cos(twice) + s2 * std::sin(twice));
}

SimulatedScene::SimulatedScene(int width, int height, const SceneSettings& settings)
    : settings_(settings), width_(width), height_(height) {
  const bool side_by_side = width_ >= height_;
  sphere_x_ = side_by_side ? 0.26 * width_ : 0.5 * width_;
  sphere_y_ = side_by_side ? 0.5 * height_ : 0.26 * height_;
  wheel_x_ = width_ - sphere_x_;
  wheel_y_ = height_ - sphere_y_;
  const double longer = std::max(width_, height_);
  const double shorter = std::min(width_, height_);
  radius_ = std::min(0.225 * longer, 0.43 * shorter);
}

StokesVector SimulatedScene::light_at(double x, double y) const {
  const StokesVector light = whole_light_at(x, y);
  return {settings_.light * light.s0, settings_.light * light.s1, settings_.light * light.s2};
}

StokesVector SimulatedScene::whole_light_at(double x, double y) const {
  if (settings_.uniform_light) {
    return *settings_.uniform_light;
  }
  if (length_of(x - sphere_x_, y - sphere_y_) < radius_) {
    return sphere_light((x - sphere_x_) / radius_, (sphere_y_ - y) / radius_);
  }
  if (length_of(x - wheel_x_, y - wheel_y_) < radius_) {
    return wheel_light((x - wheel_x_) / radius_, (wheel_y_ - y) / radius_);
  }
  return {0.30 + 0.12 * x / width_ + 0.08 * y / height_, 0.0, 0.0};
}

// Seen from afar, the surface normal at (x, y) of the unit sphere leans from the line of sight by the angle of
// incidence, within the plane of incidence whose direction in the image is that of (x, y). Light mirrored by the
// surface swings mostly across that plane and wholly so at Brewster's angle (Hecht, section 8.6). Light scattered
// inside the body leaves it through the same surface and swings mostly along the plane (G. A. Atkinson and E. R.
// Hancock, "Recovery of surface orientation from diffuse polarization", IEEE Trans. Image Processing 15(6), 2006).
StokesVector SimulatedScene::sphere_light(double x, double y) const {
  const double cos_incidence = std::sqrt(std::max(0.0, 1.0 - x * x - y * y));
  const Reflectances reflectances = fresnel(cos_incidence, settings_.refractive_index);
  const double body = settings_.body_albedo;
  const double along = reflectances.p + body * (1.0 - reflectances.p);
  const double across = reflectances.s + body * (1.0 - reflectances.s);
  return two_beams(0.5 * surroundings * along, 0.5 * surroundings * across, std::atan2(y, x));
}

// Sixteen sectors, each passing light along its own spoke, in two rings of different extinction; the frame between
// them is dull and dark. A polarizer halves unpolarized light into its two principal transmittances (Hecht, 8.2).
StokesVector SimulatedScene::wheel_light(double x, double y) const {
  constexpr double sector = pi / 8.0;
  constexpr double frame = 0.012;
  const double distance = length_of(x, y);
  const double position = std::atan2(y, x);
  const double axis = std::round(position / sector) * sector;
  const double from_spoke_edge = distance * std::sin(0.5 * sector - std::abs(position - axis));
  const bool outer = distance > 0.55;
  const double ring_centre = outer ? 0.775 : 0.35;
  if (from_spoke_edge < frame || std::abs(distance - ring_centre) > 0.2) {
    return {0.02, 0.0, 0.0};
  }
  const double along = 0.9 * (settings_.tint ? 0.55 + 0.45 * std::cos(axis - *settings_.tint * pi / 180.0) : 1.0);
  const double across = along / (outer ? settings_.outer_extinction : settings_.inner_extinction);
  return two_beams(0.5 * surroundings * along, 0.5 * surroundings * across, axis);
}

}  // namespace nerova_zel
