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
#    include <cstring>
#    include <limits>

#    include <malloc.h>

namespace {

std::atomic<std::ptrdiff_t> bytesInUse = 0;

/// The requested size, kept in the last bytes of a block. malloc_usable_size() would not do: the same request
/// may get 16 bytes more, depending on the free memory that malloc() finds.
struct Tail
{
    std::size_t size;
    std::size_t mark; ///< blockMark in a counted block
};

constexpr std::size_t blockMark = 0x9e3779b97f4a7c15;

std::size_t WithTail(std::size_t size)
{
    const std::size_t largest = std::numeric_limits<std::size_t>::max();
    return size > largest - sizeof(Tail) ? largest : size + sizeof(Tail);
}

char* TailOf(void* block)
{
    return static_cast<char*>(block) + ::malloc_usable_size(block) - sizeof(Tail);
}

void* Counted(void* block, std::size_t size)
{
    if (!block)
        return nullptr;
    const Tail tail = {size, blockMark};
    std::memcpy(TailOf(block), &tail, sizeof(tail));
    bytesInUse += static_cast<std::ptrdiff_t>(size);
    return block;
}

/// @return the block's size; 0 for a block that was not counted
std::size_t Discount(void* block)
{
    if (!block || ::malloc_usable_size(block) < sizeof(Tail))
        return 0;
    Tail tail;
    std::memcpy(&tail, TailOf(block), sizeof(tail));
    if (tail.mark != blockMark)
        return 0;
    bytesInUse -= static_cast<std::ptrdiff_t>(tail.size);
    std::memset(TailOf(block), 0, sizeof(tail));
    return tail.size;
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
    return Counted(__libc_malloc(WithTail(size)), size);
}

void* calloc(std::size_t count, std::size_t size)
{
    std::size_t bytes = 0;
    if (__builtin_mul_overflow(count, size, &bytes)) {
        errno = ENOMEM;
        return nullptr;
    }
    return Counted(__libc_calloc(1, WithTail(bytes)), bytes);
}

void* realloc(void* block, std::size_t size)
{
    if (block && size == 0) {
        free(block);
        return nullptr;
    }
    const std::size_t before = Discount(block);
    void* const moved = __libc_realloc(block, WithTail(size));
    if (!moved && before > 0)
        Counted(block, before); // the block is unchanged
    return Counted(moved, size);
}

void* memalign(std::size_t alignment, std::size_t size)
{
    return Counted(__libc_memalign(alignment, WithTail(size)), size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size)
{
    return memalign(alignment, size);
}

int posix_memalign(void** result, std::size_t alignment, std::size_t size)
{
    void* const block = memalign(alignment, size);
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
