#include "benchmarks/peers/PlainZrn.h"

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace korvo::bench {
namespace {

class Reader {
 public:
  explicit Reader(const std::string& path) : stream_(std::fopen(path.c_str(), "rb"), std::fclose) {
    if (!stream_) std::abort();
  }

  bool line() { return std::fgets(text_, sizeof text_, stream_.get()) != nullptr; }

  template <typename... Fields>
  bool scan(const char* format, Fields*... fields) {
    return std::sscanf(text_, format, fields...) == static_cast<int>(sizeof...(fields));
  }

  template <typename... Fields>
  void record(const char* format, Fields*... fields) {
    if (!line() || !scan(format, fields...)) std::abort();
  }

  std::vector<double> knots() {
    int count = 0;
    record("%d", &count);
    std::vector<double> out(static_cast<std::size_t>(count));
    for (double& knot : out) record("%lf", &knot);
    return out;
  }

 private:
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream_;
  char text_[256];
};

PlainEntity polyline(Reader& reader, long long count) {
  PlainEntity out;
  for (long long i = 0; i < count; ++i) {
    zgeo::UVec3d p;
    reader.record("%lf %lf %lf", &p.x, &p.y, &p.z);
    out.points.push_back(p);
  }
  return out;
}

PlainEntity surface(Reader& reader, long long count) {
  PlainEntity out;
  for (long long i = 0; i < count; ++i) {
    zgeo::UVec3d p;
    double weight = 0;
    reader.record("%lf %lf %lf %lf", &p.x, &p.y, &p.z, &weight);
    out.points.push_back(p);
    out.weights.push_back(weight);
  }
  double ignored[2];
  reader.record("%lld %lld", &out.degreeU, &out.degreeV);
  for (int i = 0; i < 3; ++i) reader.record("%lf %lf", &ignored[0], &ignored[1]);
  out.knotsU = reader.knots();
  out.knotsV = reader.knots();
  return out;
}

std::vector<zgeo::UVec2d> rim(Reader& reader, long long count) {
  std::vector<zgeo::UVec2d> out;
  for (long long i = 0; i < count; ++i) {
    zgeo::UVec2d p;
    reader.record("%lf %lf", &p.x, &p.y);
    out.push_back(p);
  }
  return out;
}

}  // namespace

std::vector<PlainEntity> plainZrn(const std::string& path) {
  Reader reader(path);
  std::vector<PlainEntity> out;
  while (reader.line()) {
    long long a = 0, b = 0, code = 0;
    if (!reader.scan("%lld %lld %lld", &a, &b, &code)) std::abort();
    if (code == 1) out.push_back(polyline(reader, b));
    if (code == 9) out.push_back(surface(reader, a * b));
    if (code == 2) out.back().rim = rim(reader, a);
  }
  return out;
}

}  // namespace korvo::bench
