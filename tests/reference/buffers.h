// Test buffers: arrays at a chosen offset from a 16-byte boundary, sentinel
// filling, and arrays that end exactly at an inaccessible guard page.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace kfpg::test {

constexpr unsigned char kSentinel = 0xA5;

// `count` elements of T starting `offset` bytes past a 64-byte boundary.
template <class T>
class OffsetArray {
public:
    OffsetArray(std::size_t count, std::size_t offset)
        : count_(count), storage_(count * sizeof(T) + offset + 64) {
        auto base = reinterpret_cast<std::uintptr_t>(storage_.data());
        data_ = reinterpret_cast<T*>(((base + 63) & ~std::uintptr_t{63}) + offset);
        fill(kSentinel);
    }
    T* data() { return data_; }
    const T* data() const { return data_; }
    std::size_t size() const { return count_; }
    T& operator[](std::size_t i) { return data_[i]; }
    void fill(unsigned char byte) { std::memset(data_, byte, count_ * sizeof(T)); }
    bool allBytesAre(unsigned char byte) const {
        auto* p = reinterpret_cast<const unsigned char*>(data_);
        for (std::size_t i = 0; i < count_ * sizeof(T); ++i)
            if (p[i] != byte) return false;
        return true;
    }
    template <class U>
    void assign(const std::vector<U>& values) {
        for (std::size_t i = 0; i < count_ && i < values.size(); ++i) data_[i] = static_cast<T>(values[i]);
    }

private:
    std::size_t count_;
    std::vector<unsigned char> storage_;
    T* data_;
};

// `bytes` bytes ending exactly where a PROT_NONE page begins: touching one
// byte past the end faults. The start's alignment is whatever `bytes` leaves
// (a multiple of 16 keeps it 16-byte aligned); `slack` moves the start down
// so the end stays at the guard while the block gains `slack` leading bytes.
class GuardedBlock {
public:
    explicit GuardedBlock(std::size_t bytes, std::size_t slack = 0);
    ~GuardedBlock();
    GuardedBlock(const GuardedBlock&) = delete;
    GuardedBlock& operator=(const GuardedBlock&) = delete;
    unsigned char* data() { return data_; }
    std::size_t size() const { return bytes_; }

private:
    void* map_ = nullptr;
    std::size_t mapBytes_ = 0;
    unsigned char* data_ = nullptr;
    std::size_t bytes_ = 0;
};

}  // namespace kfpg::test
