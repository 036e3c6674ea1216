#include "calibration/polarizer_fit.h"

// The matrices are small, and code for vector units would double what is compiled.
#define EIGEN_DONT_VECTORIZE
#include <Eigen/Cholesky>
#include <Eigen/Core>
#include <Eigen/Eigenvalues>
#include <algorithm>
#include <cmath>

#include "angles.h"
#include "failure.h"
#include "frames/mosaic_layout.h"

namespace nerova_zel {

namespace {

constexpr Eigen::Index polarizers = 4;

// One type for all matrices: each combination of sizes would be compiled again.
using Matrix = Eigen::MatrixXd;
using Vector = Eigen::VectorXd;

/** Signals = diag(source) * states * responses^T, all relative to the mean signal. */
struct Model {
  Matrix states;     ///< 1, cos(2 angle), sin(2 angle) by frame
  Matrix signals;    ///< measured, by frame
  Matrix responses;  ///< by polarizer (rows) to s0, s1 and s2 (columns)
  Vector source;     ///< by frame; its mean is 1

  Eigen::Index frames() const { return signals.rows(); }
  Matrix residuals() const { return signals - source.asDiagonal() * (states * responses.transpose()); }
  void move_scale_to_responses() {
    responses *= source.mean();
    source /= source.mean();
  }
};

[[noreturn]] void refuse_angles() {
  throw Failure(
      "the angles of the frames do not determine the calibration; take at least four that spread over 180 degrees, "
      "such as every 15.");
}

/** The matrix whose product with `columns` is one, if they are independent; each has more rows than columns. */
Matrix left_inverse(const Matrix& columns) {
  const Matrix normal = columns.transpose() * columns;
  return normal.ldlt().solve(columns.transpose());
}

/**
 * Intensities t^-1 of the source that bring diag(t) * signals closest to the span of the states: t is the eigenvector
 * of the smallest eigenvalue. A start for the fit that needs no guess.
 */
Vector first_source(const Model& model) {
  const Eigen::Index frames = model.frames();
  const Matrix into_span = model.states * left_inverse(model.states);
  const Matrix out_of_span = Matrix::Identity(frames, frames) - into_span;
  Matrix departure = Matrix::Zero(frames, frames);
  for (Eigen::Index k = 0; k < polarizers; ++k) {
    departure += model.signals.col(k).asDiagonal() * out_of_span * model.signals.col(k).asDiagonal();
  }
  const Vector inverse = Eigen::SelfAdjointEigenSolver<Matrix>(departure).eigenvectors().col(0);
  if (!((inverse.array() * inverse(0)) > 0.0).all()) {
    refuse_angles();
  }
  return inverse.cwiseInverse() * inverse.sum();
}

/** Derivatives of the signals (frame by frame, the polarizer fastest) by the responses, then by the source. */
Matrix jacobian(const Model& model, bool steady) {
  const Eigen::Index parameters = 3 * polarizers + (steady ? 0 : model.frames());
  Matrix derivatives = Matrix::Zero(polarizers * model.frames(), parameters);
  for (Eigen::Index frame = 0; frame < model.frames(); ++frame) {
    for (Eigen::Index k = 0; k < polarizers; ++k) {
      derivatives.block(polarizers * frame + k, 3 * k, 1, 3) = model.source(frame) * model.states.row(frame);
    }
    if (!steady) {
      derivatives.block(polarizers * frame, 3 * polarizers + frame, polarizers, 1) =
          model.responses * model.states.row(frame).transpose();
    }
  }
  return derivatives;
}

/** Inverse of the normal matrix; the common scale of source and responses, which nothing determines, stays as it is. */
Matrix covariance_shape(const Matrix& derivatives, bool steady) {
  // Below this a relative error of the signals would come out two hundred times as large.
  constexpr double least_share = 0.005 * 0.005;
  const Eigen::SelfAdjointEigenSolver<Matrix> solver(derivatives.transpose() * derivatives);
  Vector values = solver.eigenvalues();
  const Eigen::Index free = steady ? 0 : 1;
  if (!(values(free) > least_share * values(values.size() - 1))) {
    refuse_angles();
  }
  values = values.cwiseInverse();
  values.head(free).setZero();
  return solver.eigenvectors() * values.asDiagonal() * solver.eigenvectors().transpose();
}

/** Gauss-Newton iteration; one step is exact for a steady source. Returns the shape of the covariance at the end. */
Matrix fit(Model& model, bool steady) {
  constexpr int most_steps = 50;
  constexpr double negligible = 1e-13;
  for (int step_number = 0;; ++step_number) {
    const Matrix derivatives = jacobian(model, steady);
    Matrix shape = covariance_shape(derivatives, steady);
    const Matrix by_frame = model.residuals().transpose();
    const Vector right = derivatives.transpose() * Eigen::Map<const Vector>(by_frame.data(), by_frame.size());
    const Vector step = shape * right;
    if (!step.allFinite() || step_number == most_steps) {
      refuse_angles();
    }
    model.responses += Eigen::Map<const Matrix>(step.data(), 3, polarizers).transpose();
    if (!steady) {
      model.source += step.tail(model.frames());
      model.move_scale_to_responses();
    }
    if (step.lpNorm<Eigen::Infinity>() < negligible || steady) {
      return shape;
    }
  }
}

PolarizerResponse response_of(const Matrix& responses, Eigen::Index polarizer, double scale) {
  return {scale * responses(polarizer, 0), scale * responses(polarizer, 1), scale * responses(polarizer, 2)};
}

/** The standard deviation of what depends so on the three numbers of a response. */
double deviation(const std::array<double, 3>& derivatives, const Matrix& covariance) {
  double variance = 0.0;
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t k = 0; k < 3; ++k) {
      variance +=
          derivatives[i] * covariance(static_cast<Eigen::Index>(i), static_cast<Eigen::Index>(k)) * derivatives[k];
    }
  }
  return std::sqrt(variance);
}

/** First-order propagation of the covariance of a response's three numbers to its angle and leakage. */
ResponseUncertainty propagate(const PolarizerResponse& response, const Matrix& covariance) {
  const double swing = length_of(response.cosine, response.sine);
  const double c = response.cosine / swing;
  const double s = response.sine / swing;
  const double greatest = response.unpolarized + swing;
  const double of_leakage = 2.0 / (greatest * greatest);
  return {degrees_per_radian * deviation({0.0, -0.5 * s / swing, 0.5 * c / swing}, covariance),
          of_leakage * deviation({swing, -response.unpolarized * c, -response.unpolarized * s}, covariance)};
}

double root_mean_square(double squares, std::size_t count) { return std::sqrt(squares / static_cast<double>(count)); }

}  // namespace

double PolarizerResponse::angle_degrees() const { return 0.5 * degrees_per_radian * std::atan2(sine, cosine); }

double PolarizerResponse::leakage() const {
  const double swing = length_of(cosine, sine);
  return (unpolarized - swing) / (unpolarized + swing);
}

double PolarizerFit::angle_error(std::size_t polarizer) const {
  return std::remainder(responses[polarizer].angle_degrees() - 45.0 * static_cast<double>(polarizer), 180.0);
}

ExtinctionRatio PolarizerFit::extinction(std::size_t polarizer) const {
  constexpr double greatest_told = 1e5;
  const double leakage = responses[polarizer].leakage();
  const double uncertainty = uncertainties[polarizer].leakage;
  if (leakage > 2.0 * uncertainty && leakage > 1.0 / greatest_told) {
    return {1.0 / leakage, false};
  }
  return {1.0 / std::max(1.0 / greatest_told, leakage + 2.0 * uncertainty), true};
}

double PolarizerFit::common_angle_error() const {
  return (angle_error(0) + angle_error(1) + angle_error(2) + angle_error(3)) / 4.0;
}

double PolarizerFit::residual_of(std::size_t polarizer) const {
  double squares = 0.0;
  for (const PerPolarizer& residual : residuals) {
    squares += residual[polarizer] * residual[polarizer];
  }
  return root_mean_square(squares, residuals.size());
}

double PolarizerFit::residual_of_frame(std::size_t frame) const {
  double squares = 0.0;
  for (const double residual : residuals[frame]) {
    squares += residual * residual;
  }
  return root_mean_square(squares, residuals[frame].size());
}

PolarizerFit fit_polarizers(const std::vector<SourceSample>& samples, bool steady) {
  const auto frames = static_cast<Eigen::Index>(samples.size());
  Model model;
  model.states.resize(frames, 3);
  model.signals.resize(frames, 4);
  for (Eigen::Index frame = 0; frame < frames; ++frame) {
    const SourceSample& sample = samples[static_cast<std::size_t>(frame)];
    const double twice = 2.0 * sample.angle_degrees / degrees_per_radian;
    model.states.row(frame) << 1.0, std::cos(twice), std::sin(twice);
    model.signals.row(frame) = Eigen::Map<const Eigen::RowVectorXd>(sample.signal.data(), polarizers);
  }
  const double mean_signal = model.signals.mean();
  model.signals /= mean_signal;
  model.source = steady ? Vector::Ones(frames) : first_source(model);
  model.source /= model.source.mean();
  const Matrix lit_states = model.source.asDiagonal() * model.states;
  model.responses = (left_inverse(lit_states) * model.signals).transpose();
  const Matrix shape = fit(model, steady);

  const double scale = 0.5 / model.responses.col(0).mean();
  const double mean_source = mean_signal / scale;
  const Matrix left = model.residuals();
  const Eigen::Index parameters = 3 * polarizers + (steady ? 0 : frames - 1);
  const double variance = left.squaredNorm() / static_cast<double>(polarizers * frames - parameters);
  PolarizerFit result;
  for (Eigen::Index k = 0; k < polarizers; ++k) {
    const auto at = static_cast<std::size_t>(k);
    result.responses[at] = response_of(model.responses, k, scale);
    result.uncertainties[at] =
        propagate(result.responses[at], scale * scale * variance * shape.block(3 * k, 3 * k, 3, 3));
  }
  for (Eigen::Index frame = 0; frame < frames; ++frame) {
    result.source.push_back(model.source(frame) * mean_source);
    result.angles.push_back(samples[static_cast<std::size_t>(frame)].angle_degrees);
    result.residuals.push_back({});
    for (std::size_t k = 0; k < 4; ++k) {
      result.residuals.back()[k] = left(frame, static_cast<Eigen::Index>(k)) * scale;
    }
  }
  return result;
}

Calibration calibration_matrices(const std::array<PolarizerResponse, 4>& responses) {
  Matrix analyzers(4, 3);
  for (std::size_t k = 0; k < responses.size(); ++k) {
    analyzers.row(static_cast<Eigen::Index>(k)) << responses[k].unpolarized, responses[k].cosine, responses[k].sine;
  }
  // The library's first row gives twice the power.
  Matrix weights = left_inverse(analyzers);
  weights.row(0) *= 2.0;
  Calibration matrices{};
  for (std::size_t m = 0; m < matrices.size(); ++m) {
    const MosaicLayout around(45 * static_cast<int>(m));
    for (int column = 0; column < 4; ++column) {
      const int polarizer = around.angle_at(column % 2, column / 2) / 45;
      for (int row = 0; row < 3; ++row) {
        // An ideal sensor has true zeros; what rounding leaves of them is none of the calibration.
        const double weight = weights(row, polarizer);
        const auto at = static_cast<std::size_t>(row) * 4 + static_cast<std::size_t>(column);
        matrices[m][at] = std::abs(weight) < 1e-12 ? 0.0F : static_cast<float>(weight);
      }
    }
  }
  return matrices;
}

}  // namespace nerova_zel
