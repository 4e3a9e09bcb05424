// Failures that the C++ library reports on its own account, above all of the allocator, as fatal errors.
#pragma once

#include <cstddef>
#include <functional>
#include <new>

namespace k2k {

// What operator new of this program throws.
class OutOfMemory : public std::bad_alloc {
  public:
    explicit OutOfMemory(size_t size) : size_(size) {}
    const char* what() const noexcept override { return "out of memory"; }
    size_t size() const { return size_; }

  private:
    size_t size_;
};

// Runs action; whatever it throws beside FatalStop and ProgramExit is reported through FatalError.
void ReportFailures(const std::function<void()>& action);

}  // namespace k2k
