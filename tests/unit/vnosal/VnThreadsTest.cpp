#include "PrintText.h"
#include "zotracker/vnosal/VnCriticalSection.h"
#include "zotracker/vnosal/VnString.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

using namespace VnOSAL;

constexpr int threadCount = 4;

template <class Work>
void RunInThreads(Work work)
{
    std::vector<std::thread> threads;
    for (int number = 0; number < threadCount; ++number)
        threads.emplace_back(work, number);
    for (std::thread& thread : threads)
        thread.join();
}

// Texts of every pool, changed from several threads while all of them share the texts.
TEST(VnStringThreads, DetachFromTextThatOthersShare)
{
    std::vector<VnString> shared;
    for (std::size_t length = 1; length < 600; length += 37)
        shared.emplace_back(length, L's');
    std::atomic<int> faults{0};
    RunInThreads([&](int number) {
        const auto own = static_cast<wchar_t>(L'a' + number);
        for (int round = 0; round < 300; ++round)
            for (const VnString& original : shared)
            {
                VnString copy = original;
                const VnString second = copy;
                copy.SetAt(0, own).Append(own);
                faults += copy[0] != own || copy[original.GetLength()] != own;
                faults += second != original || second[0] != L's';
            }
    });
    EXPECT_EQ(faults, 0);
    for (const VnString& text : shared)
        EXPECT_EQ(text, std::wstring(text.GetLength(), L's'));
}

// One thread's block is often another's next one: none may be handed out twice.
TEST(VnStringThreads, GiveBlocksBackForOthersToTake)
{
    std::atomic<int> faults{0};
    RunInThreads([&](int number) {
        std::vector<VnString> held(50);
        for (std::size_t round = 0; round < 20000; ++round)
        {
            VnString& text = held[round * 7 % held.size()];
            const std::size_t length = text.GetLength();
            faults += length != 0 && text != std::wstring(length, text[0]);
            text = VnString(1 + round % 130, static_cast<wchar_t>(L'A' + number));
        }
    });
    EXPECT_EQ(faults, 0);
}

TEST(VnCriticalSection, AdmitsOneThreadAtATimeAndItsHolderAgain)
{
    VnCriticalSection section;
    int sum = 0;
    RunInThreads([&](int) {
        for (int round = 0; round < 5000; ++round)
        {
            const VnCriticalSectionLock lock(section);
            ++sum;
        }
    });
    EXPECT_EQ(sum, threadCount * 5000);

    const auto isFreeForOthers = [&section] {
        bool entered = false;
        std::thread([&] {
            VnCriticalSectionLock tried(section, EEnter::Try);
            entered = static_cast<bool>(tried);
        }).join();
        return entered;
    };
    section.Enter();
    EXPECT_TRUE(section.TryEnter());
    section.Leave();
    EXPECT_FALSE(isFreeForOthers());
    section.Leave();
    EXPECT_TRUE(isFreeForOthers());

    VnCriticalSectionLock lock(section);
    EXPECT_FALSE(isFreeForOthers());
    lock.Leave();
    lock.Leave();
    EXPECT_TRUE(isFreeForOthers());
}

} // namespace
