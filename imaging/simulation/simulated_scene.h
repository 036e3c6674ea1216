#pragma once

#include <optional>

namespace nerova_zel {

/** Linear Stokes parameters of light; s0 = 1 is what fills a pixel without polarizer to full scale. */
struct StokesVector {
  double s0 = 0;
  double s1 = 0;
  double s2 = 0;

  /** Degree of linear polarization, 0 to 1; 0 without light. */
  double degree() const;
  /** Angle of linear polarization in degrees, at least 0 and below 180. */
  double angle_degrees() const;
  /** Intensity behind an ideal linear polarizer: s0 = 1, s1 = 1 gives 1 at 0 degrees and 0 at 90. */
  double behind_polarizer(double angle_degrees) const;
};

/** What stands in the picture. Angles turn from the image's horizontal axis counter-clockwise as seen on a screen. */
struct SceneSettings {
  /** Refractive index of the sphere, above 1. */
  double refractive_index = 1.5;
  /** Share of the light that leaves the sphere's body after being scattered inside, 0 to 1. */
  double body_albedo = 0.05;
  /** Extinction ratios (transmittance along over transmittance across) of the wheel's two rings, at least 1. */
  double outer_extinction = 1000.0;
  double inner_extinction = 3.0;
  /**
   * For a scene in one colour: the position in degrees of the sector that passes it whole; those farther around the
   * wheel pass less, down to a tenth on the other side. Without it sectors are colourless.
   */
  std::optional<double> tint;
  /** Share of all light that is seen. */
  double light = 1.0;
  /** The same light everywhere in place of all that. */
  std::optional<StokesVector> uniform_light;
};

/**
 * A glossy dielectric sphere and a wheel of sixteen linear polarizers before an unpolarized backdrop, lit evenly from
 * all sides by unpolarized light. Every point has a polarization known from physics.
 */
class SimulatedScene {
 public:
  SimulatedScene(int width, int height, const SceneSettings& settings);

  /** Light at a point in pixels from the image's top-left corner; pixel (0, 0) has its centre at (0.5, 0.5). */
  StokesVector light_at(double x, double y) const;

 private:
  StokesVector whole_light_at(double x, double y) const;
  StokesVector sphere_light(double x, double y) const;
  StokesVector wheel_light(double x, double y) const;

  SceneSettings settings_;
  double width_;
  double height_;
  double sphere_x_;
  double sphere_y_;
  double wheel_x_;
  double wheel_y_;
  double radius_;
};

}  // namespace nerova_zel
