#include "driver/stack_thread.h"

#include <system_error>
#include <utility>

namespace k2k {

StackThread::StackThread(std::function<void()> body, size_t stackSize) : body_(std::move(body)) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, stackSize);
    const int error = pthread_create(&thread_, &attributes, Run, this);
    pthread_attr_destroy(&attributes);
    if (error != 0) throw std::system_error(error, std::generic_category(), "cannot start a thread");
    running_ = true;
}

StackThread::~StackThread() {
    Wait();
}

void StackThread::Join() {
    Wait();
    if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
}

void* StackThread::Run(void* self) {
    auto* thread = static_cast<StackThread*>(self);
    try {
        thread->body_();
    } catch (...) {
        thread->failure_ = std::current_exception();
    }
    return nullptr;
}

void StackThread::Wait() {
    if (std::exchange(running_, false)) pthread_join(thread_, nullptr);
}

}  // namespace k2k
