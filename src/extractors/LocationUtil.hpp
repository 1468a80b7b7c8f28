#pragma once

#include <optional>
#include <utility>

namespace tavrin {

// Hides true positions by turning the globe about three axes by a secret
// angle. Distances between turned points stay true. Immutable, so one
// instance is shared by every photo-library source.
class LocationUtil {
 public:
  using Coordinate = std::pair<std::optional<double>, std::optional<double>>;

  static constexpr double earthRadius = 6378137.0;

  // `angleDegrees` is the rotation angle in degrees.
  explicit LocationUtil(double angleDegrees);

  // The turned latitude and longitude in degrees; both absent when either is.
  Coordinate rotateCoordinate(std::optional<double> latitude,
                              std::optional<double> longitude) const;

 private:
  double _angleCosinus;
  double _andleSinus;
};

}  // namespace tavrin
