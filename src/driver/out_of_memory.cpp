#include "driver/out_of_memory.h"

#include <algorithm>
#include <climits>
#include <cstdlib>

#include "driver/build_log.h"

namespace k2k {

namespace {

[[noreturn]] void ReportOutOfMemory(size_t size) {
    const int shown = static_cast<int>(std::min<size_t>(size, INT_MAX));
    FatalError("\nOut of memory while allocating %d bytes !\n", shown);
}

}  // namespace

void ReportFailures(const std::function<void()>& action) {
    try {
        action();
    } catch (const FatalStop&) {
        throw;
    } catch (const ProgramExit&) {
        throw;
    } catch (const OutOfMemory& failure) {
        ReportOutOfMemory(failure.size());
    } catch (const std::bad_alloc&) {
        ReportOutOfMemory(0);
    } catch (const std::exception& failure) {
        FatalError("%s", failure.what());
    }
}

}  // namespace k2k

// The allocator of the program: as the library's, but its failure knows the size that was asked for.
void* operator new(size_t size) {
    if (void* memory = std::malloc(std::max<size_t>(size, 1))) return memory;
    throw k2k::OutOfMemory(size);
}

void* operator new(size_t size, const std::nothrow_t&) noexcept {
    return std::malloc(std::max<size_t>(size, 1));
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, size_t) noexcept {
    std::free(memory);
}

void operator delete(void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}
