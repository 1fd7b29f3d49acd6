#include <qx/foundation/block.h>

#include <new>

[[gnu::noinline]] void* qxObtainBlock(std::size_t bytes) { return ::operator new[](bytes); }

[[gnu::noinline]] void qxReleaseBlock(void* block) noexcept { ::operator delete[](block); }
