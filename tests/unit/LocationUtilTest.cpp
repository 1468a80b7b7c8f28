#include "extractors/LocationUtil.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace tavrin {
namespace {

constexpr double pi = 3.141592653589793;

double greatCircleMetres(double lat1, double lon1, double lat2, double lon2) {
  const double p1 = lat1 * pi / 180, p2 = lat2 * pi / 180;
  const double dp = p2 - p1, dl = (lon2 - lon1) * pi / 180;
  const double a = std::sin(dp / 2) * std::sin(dp / 2) +
                   std::cos(p1) * std::cos(p2) * std::sin(dl / 2) * std::sin(dl / 2);
  return 2 * LocationUtil::earthRadius * std::asin(std::sqrt(std::min(1.0, a)));
}

struct Worked {
  double theta, latitude, longitude, expectedLatitude, expectedLongitude;
  double tolerance = 1e-6;
};

class Rotation : public testing::TestWithParam<Worked> {};

TEST_P(Rotation, ReproducesWorkedValues) {
  const auto& w = GetParam();
  const auto [latitude, longitude] =
      LocationUtil(w.theta).rotateCoordinate(w.latitude, w.longitude);
  ASSERT_TRUE(latitude && longitude);
  EXPECT_NEAR(*latitude, w.expectedLatitude, w.tolerance);
  // At a pole every longitude names the same point.
  if (std::abs(w.expectedLatitude) < 89.999) {
    EXPECT_NEAR(*longitude, w.expectedLongitude, w.tolerance);
  }
}

INSTANTIATE_TEST_SUITE_P(Angles, Rotation,
                         testing::Values(Worked{180, 48.8566, 2.3522, 48.8566, 2.3522},
                                         Worked{90, 48.8566, 2.3522, -41.101235, 2.053637},
                                         Worked{90, 0, 0, -90, 0}, Worked{135, 0, 0, -45, -45},
                                         Worked{269, -33.8688, 151.2093, -46.117033, -145.479000},
                                         Worked{269, 0, 0, 89, 89, 0.05},
                                         // Turned onto a pole, where rounding takes the sine
                                         // of the latitude a hair past 1.
                                         Worked{269, 0.0174515206644, 0.999847726078, 90, 0},
                                         Worked{269, -0.0174515206744, -179.000152274, -90, 0}));

TEST(Rotation, AbsentHalfGivesBothAbsent) {
  for (const auto& [lat, lon] : {LocationUtil::Coordinate{{}, 1.0}, {1.0, {}}, {{}, {}}}) {
    EXPECT_EQ(LocationUtil(123).rotateCoordinate(lat, lon), LocationUtil::Coordinate());
  }
}

TEST(Rotation, PreservesDistancesAndStaysInRange) {
  std::mt19937_64 random(7);
  std::uniform_real_distribution<double> latitudes(-90, 90), longitudes(-180, 180);
  EXPECT_NEAR(greatCircleMetres(48.8566, 2.3522, 51.5074, -0.1278), 343940, 100);
  for (int theta = 90; theta <= 269; ++theta) {
    const LocationUtil util(theta);
    for (int i = 0; i < 50; ++i) {
      const double a = latitudes(random), b = longitudes(random);
      const double c = latitudes(random), d = longitudes(random);
      const auto [ra, rb] = util.rotateCoordinate(a, b);
      const auto [rc, rd] = util.rotateCoordinate(c, d);
      ASSERT_TRUE(std::isfinite(*ra) && std::isfinite(*rb));
      EXPECT_LE(std::abs(*ra), 90.0);
      EXPECT_LE(std::abs(*rb), 180.0);
      EXPECT_NEAR(greatCircleMetres(*ra, *rb, *rc, *rd), greatCircleMetres(a, b, c, d), 1e-3);
    }
  }
}

}  // namespace
}  // namespace tavrin
