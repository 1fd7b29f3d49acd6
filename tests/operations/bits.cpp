#include <cstdio>

#include "tests/operations/operations.h"

/// Prints one line for each operation: `name type hash`. Two builds that print the same lines give the same bits; a `~`
/// before the hash marks what may differ between platforms, though not between compilers.
int main() {
  VisitOperations([](const Operation& operation) {
    Hash hash;
    operation.compute(hash);
    std::printf("%s %s %s%016llx\n", operation.name.c_str(), operation.type, operation.isPlatform ? "~" : "",
                static_cast<unsigned long long>(hash.Value()));
  });
}
