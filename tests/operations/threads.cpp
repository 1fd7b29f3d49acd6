#include <cstdint>
#include <cstdio>
#include <thread>
#include <vector>

#include "tests/operations/operations.h"

namespace {

std::vector<std::uint64_t> HashesOfAll() {
  std::vector<std::uint64_t> hashes;
  VisitOperations([&](const Operation& operation) {
    Hash hash;
    operation.compute(hash);
    hashes.push_back(hash.Value());
  });
  return hashes;
}

/// What threads may share: constant objects, one of each kind.
template <typename T>
struct Shared {
  CQXWaveletFilter<T> filter{QX_WAVELET_3_5};
  CQXPerspective3DTransform<T> projection{{0, 0, 5}, {0, 0, -1}, {0, 1, 0}, {0, 0, -1}, 1, 2, 2, 0, 9};
  CQXRandom<T> generator;
  CQXQuaternion<T> rotation{T(0.6), T(0), T(0.8), T(0)};
  CQXMatrixMN<T> matrix{9, 5, Numbers<T>(1).Array(45).data()};

  Shared() {
    if (projection.Initialize() == 0) std::puts("the projection is not ready");
    generator.SetNormal(1, 2);
    generator.Initialize();
  }

  [[nodiscard]] std::uint64_t Use() const {
    Hash hash;
    CQXChannel<T> channel(33, 21, Numbers<T>(2).Array(33 * 21).data(), 0, 0);
    hash(channel.FWT(&filter, QX_CHANNEL_2D, 2));
    CQXVector2<T> q;
    hash(projection.ProjectPoint({T(0.25), T(0.5), T(1)}, q), q, rotation.Rotate({1, 2, 3}));
    CQXRandom<T> copy(generator);
    for (int i = 0; i < 500; ++i) hash(copy.GetNumber());
    hash(matrix.Transpose() * matrix, matrix.Mean());
    return hash.Value();
  }
};

}  // namespace

/// Runs the whole table, and constant members of shared objects, in several threads at once: each thread must find what
/// one alone finds. Meant for ThreadSanitizer.
int main() {
  const Shared<float> floats;
  const Shared<double> doubles;
  const auto computeAll = [&] {
    std::vector<std::uint64_t> hashes;
    for (int i = 0; i < 20; ++i) hashes.insert(hashes.end(), {floats.Use(), doubles.Use()});
    for (const std::uint64_t hash : HashesOfAll()) hashes.push_back(hash);
    return hashes;
  };
  const std::vector<std::uint64_t> expected = computeAll();
  std::vector<std::uint64_t> found[4];
  std::vector<std::thread> threads;
  for (auto& hashes : found) threads.emplace_back([&] { hashes = computeAll(); });
  for (std::thread& thread : threads) thread.join();
  for (const auto& hashes : found) {
    if (hashes != expected) {
      std::puts("a thread found something else than one alone");
      return 1;
    }
  }
  std::printf("%zu results equal in 4 threads\n", expected.size());
}
