#include <cstdlib>
#include <new>

// The runtime's own throws and catches. Here a thread's first exception takes memory, and where there is none the
// runtime ends the process. Serves this library only.
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept { return std::malloc(size); }
