#include "Tests/Support/HeapBytes.h"

#ifdef __has_feature
#    if __has_feature(address_sanitizer)
#        define __SANITIZE_ADDRESS__
#    endif
#endif

#ifdef __SANITIZE_ADDRESS__

// The sanitizer replaces the C library's functions. Declared here, since not every compiler installs its
// header.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();

std::ptrdiff_t Tests::HeapBytesInUse()
{
    return static_cast<std::ptrdiff_t>(__sanitizer_get_current_allocated_bytes());
}

#else

#    include <atomic>
#    include <cerrno>

#    include <malloc.h>

namespace {

std::atomic<std::ptrdiff_t> bytesInUse = 0;

void* Counted(void* block)
{
    bytesInUse += static_cast<std::ptrdiff_t>(::malloc_usable_size(block));
    return block;
}

void Discount(void* block)
{
    bytesInUse -= static_cast<std::ptrdiff_t>(::malloc_usable_size(block));
}

} // namespace

std::ptrdiff_t Tests::HeapBytesInUse()
{
    return bytesInUse;
}

// These replace the C library's functions, in the shared libraries, too.
extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);

void* malloc(std::size_t size)
{
    return Counted(__libc_malloc(size));
}

void* calloc(std::size_t count, std::size_t size)
{
    return Counted(__libc_calloc(count, size));
}

void* realloc(void* block, std::size_t size)
{
    Discount(block);
    void* const moved = __libc_realloc(block, size);
    if (!moved && size > 0)
        Counted(block); // the block is unchanged
    return Counted(moved);
}

void* memalign(std::size_t alignment, std::size_t size)
{
    return Counted(__libc_memalign(alignment, size));
}

void* aligned_alloc(std::size_t alignment, std::size_t size)
{
    return Counted(__libc_memalign(alignment, size));
}

int posix_memalign(void** result, std::size_t alignment, std::size_t size)
{
    void* const block = Counted(__libc_memalign(alignment, size));
    if (!block)
        return ENOMEM;
    *result = block;
    return 0;
}

void free(void* block)
{
    Discount(block);
    __libc_free(block);
}

} // extern "C"

#endif
