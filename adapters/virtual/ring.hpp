#pragma once

#include <array>
#include <cstddef>

namespace virtual_adapter {

// First in, first out, in memory of its own. Slots is a power of two; the caller keeps size() within it.
template <class Entry, std::size_t Slots>
class Ring {
    static_assert((Slots & (Slots - 1)) == 0);

  public:
    [[nodiscard]] std::size_t size() const { return written_ - read_; }
    [[nodiscard]] bool empty() const { return written_ == read_; }
    [[nodiscard]] const Entry& front() const { return entries_[read_ % Slots]; }

    void push(const Entry& entry) { entries_[written_++ % Slots] = entry; }
    void pop() { ++read_; }
    void clear() { read_ = written_; }

  private:
    std::size_t read_ = 0;
    std::size_t written_ = 0;
    std::array<Entry, Slots> entries_;
};

}  // namespace virtual_adapter
