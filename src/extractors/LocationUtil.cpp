#include "extractors/LocationUtil.hpp"

#include <algorithm>
#include <cmath>

namespace tavrin {

namespace {
constexpr double pi = 3.141592653589793;
constexpr double toRadians = pi / 180;
constexpr double toDegrees = 180 / pi;
}  // namespace

LocationUtil::LocationUtil(double angleDegrees)
    : _angleCosinus(std::cos(angleDegrees * pi / 180)),
      _andleSinus(std::sin(angleDegrees * pi / 180)) {}

LocationUtil::Coordinate LocationUtil::rotateCoordinate(std::optional<double> latitude,
                                                        std::optional<double> longitude) const {
  if (!latitude || !longitude) return {std::nullopt, std::nullopt};
  const double c = _angleCosinus;
  const double s = _andleSinus;
  const double phi = *latitude * toRadians;
  const double lambda = *longitude * toRadians;

  const double x = earthRadius * std::cos(phi) * std::cos(lambda);
  const double y = earthRadius * std::cos(phi) * std::sin(lambda);
  const double z = earthRadius * std::sin(phi);

  // About the x axis, then the y axis, then the z axis, by the same angle.
  const double y1 = y * c - z * s;
  const double z1 = z * c + y * s;
  const double x2 = x * c + z1 * s;
  const double z2 = z1 * c - x * s;
  const double x3 = x2 * c - y1 * s;
  const double y3 = y1 * c + x2 * s;

  // Rounding can carry a point on a pole a hair past the sphere; clamping keeps
  // asin defined so that no NaN can reach the dataset.
  const double sine = std::clamp(z2 / earthRadius, -1.0, 1.0);
  return {std::asin(sine) * toDegrees, std::atan2(y3, x3) * toDegrees};
}

}  // namespace tavrin
