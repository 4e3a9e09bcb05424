// The messages that worker threads post to the controlling thread.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>

namespace k2k {

enum class Message {
    StartNextStage,
    StageFinished,  // carries the stage's word as it stands
    WorkerEnded     // a worker ended on its own, without its stage being finished
};

struct PostedMessage {
    Message message;
    uint32_t word = 0;
};

class MessageQueue {
  public:
    void Post(PostedMessage posted) {
        // Notified under the lock: a queue that goes out of scope after the last message is not touched any more.
        const std::lock_guard lock(lock_);
        messages_.push_back(posted);
        arrived_.notify_one();
    }

    // The oldest message; nothing when none came before the deadline.
    std::optional<PostedMessage> WaitUntil(std::chrono::steady_clock::time_point deadline) {
        std::unique_lock lock(lock_);
        if (!arrived_.wait_until(lock, deadline, [this] { return !messages_.empty(); })) return std::nullopt;
        const PostedMessage oldest = messages_.front();
        messages_.pop_front();
        return oldest;
    }

  private:
    std::mutex lock_;
    std::condition_variable arrived_;
    std::deque<PostedMessage> messages_;
};

}  // namespace k2k
