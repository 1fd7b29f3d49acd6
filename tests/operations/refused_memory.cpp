#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <vector>

#include "tests/failure/refusing_new.h"
#include "tests/operations/operations.h"

namespace {

/// Numbers below @p count: the first ones, then ever fewer, with both parities, about @p wanted in all.
std::vector<std::int64_t> Sample(std::int64_t count, std::int64_t wanted) {
  std::vector<std::int64_t> chosen;
  for (std::int64_t k = 0; k < count; k += 1 + (k < wanted ? 0 : 2 * k / wanted + k % 2)) chosen.push_back(k);
  return chosen;
}

struct Sweep {
  std::int64_t wanted;
  std::int64_t refusals = 0;
  std::int64_t defects = 0;

  void Refuse(const Operation& operation, std::int64_t k, refusal::Manner manner, bool forever) {
    Hash hash;
    const std::int64_t before = refusal::LiveBlocks();
    refusal::Begin(k, manner, forever);
    try {
      operation.compute(hash);
    } catch (const std::bad_alloc&) {
      // The library lets what `operator new` throws pass; the table's own containers throw too.
    }
    refusals += refusal::End();
    if (const std::int64_t leaked = refusal::LiveBlocks() - before; leaked != 0) {
      ++defects;
      std::printf("%s %s: %lld blocks leaked, refusal %lld by %s %s\n", operation.name.c_str(), operation.type,
                  static_cast<long long>(leaked), static_cast<long long>(k),
                  manner == refusal::Manner::Null ? "null" : "exception", forever ? "from then on" : "once");
    }
  }

  void operator()(const Operation& operation) {
    Hash undisturbed, expected, afterwards;
    operation.compute(undisturbed);  // what is allocated once and kept is not a leak
    const std::int64_t before = refusal::Requests();
    operation.compute(undisturbed);
    const std::int64_t count = refusal::Requests() - before;
    operation.compute(expected);
    for (const std::int64_t k : Sample(count, wanted)) {
      for (const refusal::Manner manner : {refusal::Manner::Throws, refusal::Manner::Null}) {
        for (const bool forever : {false, true}) Refuse(operation, k, manner, forever);
      }
    }
    operation.compute(afterwards);
    if (afterwards.Value() != expected.Value()) {
      ++defects;
      std::printf("%s %s gives something else after refusals\n", operation.name.c_str(), operation.type);
    }
  }
};

}  // namespace

/// Runs every operation again and again while its k-th request for memory is refused, by an exception and by null, once
/// and from then on: it must come to an end, leak nothing and work as before afterwards. The argument is about how many
/// k of each operation are tried, 12 without one.
int main(int argc, char** argv) {
  Sweep sweep{argc > 1 ? std::atoll(argv[1]) : 12};
  VisitOperations([&](const Operation& operation) { sweep(operation); });
  std::printf("%lld requests refused, %lld defects\n", static_cast<long long>(sweep.refusals),
              static_cast<long long>(sweep.defects));
  return sweep.defects == 0 && sweep.refusals > 0 ? 0 : 1;
}
