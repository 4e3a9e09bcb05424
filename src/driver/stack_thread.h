// A thread with a stack of a known size, for recursions that a default stack may be too small for.
#pragma once

#include <pthread.h>

#include <cstddef>
#include <exception>
#include <functional>

namespace k2k {

// Runs body at once. Whoever waits with Join gets the exception that the body ended with; the destructor waits too, but
// drops it. Throws std::system_error when no thread can be made.
class StackThread {
  public:
    static constexpr size_t WorkerStack = 8'388'608;

    explicit StackThread(std::function<void()> body, size_t stackSize = WorkerStack);
    ~StackThread();
    StackThread(const StackThread&) = delete;
    StackThread& operator=(const StackThread&) = delete;

    void Join();

  private:
    static void* Run(void* self);
    void Wait();

    std::function<void()> body_;
    std::exception_ptr failure_;
    pthread_t thread_{};
    bool running_ = false;
};

}  // namespace k2k
