#include "toolkit/export/Picture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "toolkit/export/View.h"

using zgeo::UTri;
using zgeo::UVec3d;

namespace korvo::exporting {
namespace {

constexpr int kFine = 3;                         // samples along a pixel's side
constexpr std::size_t kSamplesAtOnce = 1 << 22;  // in a band, which bounds the memory

using Colour = std::array<std::uint8_t, 3>;
constexpr Colour kBackground{214, 218, 222};

// From above, the front and a little from the right, so that the three faces of a box differ.
const UVec3d kToLight = UVec3d(0.30, -0.55, 0.90).normalised();
constexpr double kAmbient = 0.4;
constexpr double kDirect = 0.7;

// Both sides of a triangle look alike: files do not agree on which one is outside.
double brightness(const UTri& t) {
  const UVec3d n = normalOf(t);
  const double cosine = (n * kToViewer < 0 ? -n : n) * kToLight;
  return std::min(1.0, kAmbient + kDirect * std::max(0.0, cosine));
}

Colour shaded(const std::array<int, 3>& rgb, double brightness) {
  Colour colour;
  for (std::size_t i = 0; i < 3; ++i) {
    colour[i] = static_cast<std::uint8_t>(std::lround(rgb[i] * brightness));
  }
  return colour;
}

// Rows [top, top + rows) of the samples.
struct Band {
  int width, top, rows;
  std::vector<float> depth;  // towards the viewer
  std::vector<Colour> colours;

  Band(int w, int r) : width(w), top(0), rows(r), depth(size()), colours(size()) {}
  std::size_t size() const {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(rows);
  }

  void start(int at) {
    top = at;
    std::fill(depth.begin(), depth.end(), -std::numeric_limits<float>::infinity());
    std::fill(colours.begin(), colours.end(), kBackground);
  }
};

// Twice the area of (a, b, p), positive when p is left of a to b in a picture with y up.
double side(const UVec3d& a, const UVec3d& b, double x, double y) {
  return (b.x - a.x) * (y - a.y) - (b.y - a.y) * (x - a.x);
}

// First and last sample whose middle lies between two places, kept within [least, most].
int firstSample(double place, int least) {
  return std::max(least, static_cast<int>(std::ceil(place - 0.5)));
}
int lastSample(double place, int most) {
  return std::min(most, static_cast<int>(std::floor(place - 0.5)));
}

// A triangle in the picture: weights of its corners are linear in x and y.
void draw(Band& band, const UTri& t, const Colour& colour) {
  const UVec3d &a = t.p[0], &b = t.p[1], &c = t.p[2];
  const double area = side(a, b, c.x, c.y);
  if (area == 0.0) return;
  const auto [left, right] = std::minmax({a.x, b.x, c.x});
  const auto [high, low] = std::minmax({a.y, b.y, c.y});
  const int lastX = lastSample(right, band.width - 1);
  const int lastY = lastSample(low, band.top + band.rows - 1);
  for (int iy = firstSample(high, band.top); iy <= lastY; ++iy) {
    const std::size_t row =
        static_cast<std::size_t>(iy - band.top) * static_cast<std::size_t>(band.width);
    for (int ix = firstSample(left, 0); ix <= lastX; ++ix) {
      const double x = ix + 0.5, y = iy + 0.5;
      const double wa = side(b, c, x, y) / area, wb = side(c, a, x, y) / area;
      const double wc = 1 - wa - wb;
      if (wa < 0 || wb < 0 || wc < 0) continue;
      const auto z = static_cast<float>(wa * a.z + wb * b.z + wc * c.z);
      const std::size_t i = row + static_cast<std::size_t>(ix);
      if (z <= band.depth[i]) continue;
      band.depth[i] = z;
      band.colours[i] = colour;
    }
  }
}

void draw(Band& band, std::span<const Body> bodies, const View& view) {
  for (const Body& body : bodies) {
    forEachPlaced(body, [&](const UTri& t) {
      draw(band, {view(t.p[0]), view(t.p[1]), view(t.p[2])}, shaded(body.rgb, brightness(t)));
    });
  }
}

// The mean of a pixel's samples.
std::uint8_t mean(const Band& band, int pixelX, int row, std::size_t channel) {
  int sum = 0;
  for (int y = 0; y < kFine; ++y) {
    const std::size_t first =
        static_cast<std::size_t>(row + y) * static_cast<std::size_t>(band.width) +
        static_cast<std::size_t>(pixelX * kFine);
    for (std::size_t x = 0; x < kFine; ++x) sum += band.colours[first + x][channel];
  }
  constexpr int kCount = kFine * kFine;
  return static_cast<std::uint8_t>((sum + kCount / 2) / kCount);
}

}  // namespace

Picture drawn(std::span<const Body> bodies, PictureSize size) {
  const int width = size.width * kFine, height = size.height * kFine;
  const View view(bodies, width, height);
  const int most =
      static_cast<int>(kSamplesAtOnce / static_cast<std::size_t>(width)) / kFine * kFine;
  Band band(width, std::clamp(most, kFine, height));
  Picture picture{size, {}};
  picture.bytes.reserve(std::size_t{3} * static_cast<std::size_t>(size.width) *
                        static_cast<std::size_t>(size.height));
  for (int top = 0; top < height; top += band.rows) {
    band.start(top);
    draw(band, bodies, view);
    for (int row = 0; row < std::min(band.rows, height - top); row += kFine) {
      for (int x = 0; x < size.width; ++x) {
        for (std::size_t channel = 0; channel < 3; ++channel) {
          picture.bytes.push_back(mean(band, x, row, channel));
        }
      }
    }
  }
  return picture;
}

}  // namespace korvo::exporting
