// The programs' operator new: large blocks, whose pages a helper thread faults in while they
// are filled, keep every byte they are given, whether they are freed at once, before they are
// written, or after a while, and from two threads at once; so do small blocks from a heap that
// grows in huge pages.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <thread>
#include <vector>

namespace {

std::uint32_t Word(std::uint32_t seed, std::size_t i) {
    return seed * 2654435761u + static_cast<std::uint32_t>(i);
}

// A block from the replaceable operator new (called as a function, so that the compiler
// cannot leave it out), every word written with a pattern of its seed.
struct Filled {
    std::uint32_t* m_Words = nullptr;
    std::size_t m_Count = 0;
    std::uint32_t m_Seed = 0;

    Filled(std::size_t bytes, std::uint32_t seed)
        : m_Words(static_cast<std::uint32_t*>(::operator new(bytes))),
          m_Count(bytes / 4),
          m_Seed(seed) {
        for (std::size_t i = 0; i < m_Count; ++i)
            m_Words[i] = Word(seed, i);
    }
    ~Filled() { ::operator delete(m_Words); }
    Filled(const Filled&) = delete;
    Filled& operator=(const Filled&) = delete;

    bool Intact() const {
        asm volatile("" ::: "memory");  // read the words back from memory
        for (std::size_t i = 0; i < m_Count; ++i) {
            if (m_Words[i] != Word(m_Seed, i))
                return false;
        }
        return true;
    }
};

// Blocks of 1 to 16 MB: one freed before it is written, one freed as soon as it is filled,
// and one kept for a few rounds while others come and go. True when every block held its
// bytes.
bool Churn(std::uint32_t seed, int rounds) {
    bool intact = true;
    std::vector<std::unique_ptr<Filled>> kept;
    for (int round = 0; round < rounds; ++round) {
        const std::size_t megabytes = 1 + (seed * 7 + static_cast<std::size_t>(round) * 5) % 16;
        ::operator delete(::operator new(megabytes << 20));
        intact =
            Filled(megabytes << 20, seed + static_cast<std::uint32_t>(round)).Intact() && intact;
        kept.push_back(std::make_unique<Filled>((megabytes << 20) + 12, seed ^ 0x5a5a5a5au));
        if (kept.size() > 3) {
            intact = kept.front()->Intact() && intact;
            kept.erase(kept.begin());
        }
    }
    for (const auto& block : kept)
        intact = block->Intact() && intact;
    return intact;
}

}  // namespace

TEST(LargeBlocks, KeepTheirBytesWhileFilledAndFreedOnTwoThreads) {
    bool other = false;
    std::thread thread([&] { other = Churn(1, 24); });
    const bool here = Churn(2, 24);
    thread.join();
    EXPECT_TRUE(here);
    EXPECT_TRUE(other);
}

TEST(LargeBlocks, GrowingVectorKeepsItsElements) {
    // Each growth past a megabyte frees the last large block just after it was filled.
    std::vector<std::uint64_t> values;
    for (std::uint64_t i = 0; i < (std::uint64_t{1} << 22); ++i)
        values.push_back(i * 3 + 1);
    asm volatile("" ::: "memory");
    std::size_t wrong = 0;
    for (std::size_t i = 0; i < values.size(); ++i)
        wrong += values[i] != i * 3 + 1 ? 1 : 0;
    EXPECT_EQ(wrong, 0u);
}

TEST(SmallBlocks, KeepTheirBytesWhileTheHeapGrowsOnTwoThreads) {
    // About 100 MB of blocks under 16 KB per thread, every third freed on the way: the heap
    // grows several times while both threads fill blocks from it.
    const auto churn = [](std::uint32_t seed) {
        std::vector<std::unique_ptr<Filled>> kept;
        for (std::uint32_t i = 0; i < 12000; ++i) {
            kept.push_back(
                std::make_unique<Filled>(16 + (seed * 7919u + i * 104729u) % 16384, seed + i));
            if (i % 3 == 2)
                kept[i - 1].reset();
        }
        bool intact = true;
        for (const auto& block : kept)
            intact = (!block || block->Intact()) && intact;
        return intact;
    };
    bool other = false;
    std::thread thread([&] { other = churn(3); });
    const bool here = churn(4);
    thread.join();
    EXPECT_TRUE(here);
    EXPECT_TRUE(other);
}
