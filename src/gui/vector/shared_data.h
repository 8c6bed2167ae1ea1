// A handle on data that copies of the handle share: an atomic count of the handles, and a copy of the data
// before the first change if the count is not 1. All empty handles of a type point to one block, made on
// first use.
#pragma once

#include <atomic>
#include <cstdint>
#include <utility>

namespace vec {

template <typename T>
class SharedData {
public:
    SharedData() : m_block(Empty()) { m_block->count.fetch_add(1, std::memory_order_relaxed); }
    SharedData(const SharedData& other) : m_block(other.m_block) {
        m_block->count.fetch_add(1, std::memory_order_relaxed);
    }
    ~SharedData() { Release(); }
    SharedData& operator=(const SharedData& other) {
        SharedData copy(other);
        std::swap(m_block, copy.m_block);
        return *this;
    }

    const T& Read() const { return m_block->data; }

    // The data for a change; no other handle sees it.
    T& Write() {
        if (m_block->count.load(std::memory_order_acquire) != 1) {
            auto* own = new Block(m_block->data);
            Release();
            m_block = own;
        }
        return m_block->data;
    }

    // Forgets the data without copying it first.
    void Reset() { *this = SharedData(); }

    bool IsSharedWith(const SharedData& other) const { return m_block == other.m_block; }

private:
    struct Block {
        explicit Block(const T& source) : data(source) {}
        Block() = default;
        std::atomic<uint32_t> count{1};
        T data;
    };

    // Keeps one count for itself and so is never written and never freed.
    static Block* Empty() {
        static Block* const block = new Block;
        return block;
    }

    void Release() {
        if (m_block->count.fetch_sub(1, std::memory_order_acq_rel) == 1)
            delete m_block;
    }

    Block* m_block;
};

} // namespace vec
