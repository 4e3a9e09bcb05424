// An owning, singly linked list over a record's own `next` field.
#pragma once

#include <cstddef>
#include <iterator>
#include <memory>
#include <utility>

namespace k2k {

// The geometry code's lists are built by head insertion, which reverses order, and results depend on these orders; so
// the operations here are those of a plain linked list. The list owns its records. T needs a member `T* next`.
template <typename T>
class IntrusiveList {
  public:
    class iterator {
      public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = T;
        using difference_type = std::ptrdiff_t;
        using pointer = T*;
        using reference = T&;
        explicit iterator(T* at = nullptr) : at_(at) {}
        T& operator*() const { return *at_; }
        T* operator->() const { return at_; }
        iterator& operator++() {
            at_ = at_->next;
            return *this;
        }
        iterator operator++(int) {
            iterator old = *this;
            at_ = at_->next;
            return old;
        }
        bool operator==(const iterator& other) const = default;

      private:
        T* at_;
    };

    IntrusiveList() = default;
    ~IntrusiveList() { clear(); }
    IntrusiveList(const IntrusiveList&) = delete;
    IntrusiveList& operator=(const IntrusiveList&) = delete;
    IntrusiveList(IntrusiveList&& other) noexcept : head_(std::exchange(other.head_, nullptr)) {}
    IntrusiveList& operator=(IntrusiveList&& other) noexcept {
        if (this != &other) {
            clear();
            head_ = std::exchange(other.head_, nullptr);
        }
        return *this;
    }

    bool empty() const { return head_ == nullptr; }
    T* front() const { return head_; }
    iterator begin() const { return iterator(head_); }
    iterator end() const { return iterator(); }
    size_t size() const { return static_cast<size_t>(std::distance(begin(), end())); }

    void push_front(std::unique_ptr<T> item) {
        item->next = head_;
        head_ = item.release();
    }

    // The list must not be empty.
    std::unique_ptr<T> pop_front() {
        std::unique_ptr<T> item(head_);
        head_ = head_->next;
        item->next = nullptr;
        return item;
    }

    // Puts all of other, in its order, in front of this list's records.
    void splice_front(IntrusiveList&& other) {
        if (other.empty()) return;
        T* last = other.head_;
        while (last->next != nullptr) last = last->next;
        last->next = head_;
        head_ = std::exchange(other.head_, nullptr);
    }

    void reverse() {
        T* reversed = nullptr;
        while (head_ != nullptr) {
            T* item = head_;
            head_ = item->next;
            item->next = reversed;
            reversed = item;
        }
        head_ = reversed;
    }

    void clear() {
        while (head_ != nullptr) {
            T* item = head_;
            head_ = item->next;
            delete item;
        }
    }

  private:
    T* head_ = nullptr;
};

}  // namespace k2k
