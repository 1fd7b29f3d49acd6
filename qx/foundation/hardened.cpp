#include <qx/foundation/hardened.h>

#ifdef QX_HARDENED
#include <cstdio>
#include <cstdlib>
#include <cstring>

void qxReportViolation(const char* operation, const char* condition, std::int64_t first, std::int64_t second,
                       const char* file, int line) noexcept {
  // The place inside the library, wherever it was installed.
  const char* place = file;
  for (const char* next = file; (next = std::strstr(next, "qx/")) != nullptr; ++next) place = next;
  std::fprintf(stderr, "%s: %s does not hold for %lld and %lld (%s:%d)\n", operation, condition,
               static_cast<long long>(first), static_cast<long long>(second), place, line);
  std::abort();
}
#endif
