#pragma once

#include <atomic>
#include <cstring>
#include <thread>
#include <vector>

#include "platform/zgeo/UMatrix.h"
#include "platform/zgeo/UVec3d.h"

/// Queries asked in many threads at once, and their answers as numbers.
namespace korvo::test {

constexpr int kThreads = 8;

/// Runs `work` in all threads, which start together.
template <typename Work>
void runTogether(const Work& work) {
  std::atomic<int> waiting = kThreads;
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      for (--waiting; waiting > 0;) std::this_thread::yield();
      work();
    });
  }
  for (std::thread& thread : threads) thread.join();
}

inline void add(std::vector<double>& out, const zgeo::UVec3d& p) {
  out.insert(out.end(), {p.x, p.y, p.z});
}

inline void add(std::vector<double>& out, const zgeo::UMatrix& m) {
  for (int i = 0; i < 16; ++i) out.push_back(m(i / 4, i % 4));
}

inline bool isSameBits(const std::vector<double>& a, const std::vector<double>& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0;
}

}  // namespace korvo::test
