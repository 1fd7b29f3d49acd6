#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "tests/operations/operations.h"
#include <unistd.h>

namespace {

/// Resident memory of this program in kilobytes.
long ResidentKilobytes() {
  long pages = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> pages >> resident;
  return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

}  // namespace

/// Runs the table of operations for the given number of seconds: resident memory must stay within a megabyte of what it
/// is after the first rounds.
int main(int argc, char** argv) {
  const std::chrono::duration<double> wanted(argc > 1 ? std::atof(argv[1]) : 600);
  const auto start = std::chrono::steady_clock::now();
  long settled = 0, largest = 0, rounds = 0;
  std::uint64_t first = 0;
  while (rounds < 8 || std::chrono::steady_clock::now() - start < wanted) {
    Hash hash;
    VisitOperations([&](const Operation& operation) { operation.compute(hash); });
    if (rounds == 0) first = hash.Value();
    if (hash.Value() != first) {
      std::printf("round %ld gives something else than the first\n", rounds);
      return 1;
    }
    ++rounds;
    (rounds <= 4 ? settled : largest) = std::max(rounds <= 4 ? settled : largest, ResidentKilobytes());
  }
  std::printf("%ld rounds, %ld kB resident after 4 rounds, at most %ld kB later\n", rounds, settled, largest);
  return largest - settled <= 1024 ? 0 : 1;
}
