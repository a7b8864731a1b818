#include "frame/HitQueue.h"
#include "frame/Hits.h"

#include <gtest/gtest.h>

#include <atomic>
#include <deque>
#include <thread>
#include <vector>

using namespace frame;

namespace {

std::atomic<int> liveArrays = 0; // the queue's blocks are arrays

} // namespace

void* operator new[](std::size_t size)
{
    ++liveArrays;
    return operator new(size);
}

void operator delete[](void* array) noexcept
{
    --liveArrays;
    operator delete(array);
}

void operator delete[](void* array, std::size_t) noexcept { operator delete[](array); }

namespace {

// Hits of all sizes: empty ones, such as fill a block of 16 KiB just so or miss it by a unit, and
// such as need a block of their own. Two are appended for each one taken, then the rest is taken.
TEST(HitQueue, GivesBackHitsOfAnySizeAndTheirMemory)
{
    constexpr std::size_t room = (16 * 1024 - 24) / sizeof(wchar_t);
    constexpr std::size_t sizes[] = {0,        1,    2,        40,       room / 2, room - 1,
                                     room / 3, room, room + 1, 5 * room, 3};
    constexpr std::wstring TrackingHit::*fields[] = {&TrackingHit::field1, &TrackingHit::field2,
                                                     &TrackingHit::field3, &TrackingHit::field4,
                                                     &TrackingHit::field5};
    const int arrays = liveArrays;
    CHitQueue queue;
    std::deque<TrackingHit> expected;
    const auto take = [&] {
        EXPECT_EQ(queue.Take(), expected.front());
        expected.pop_front();
    };
    for (std::size_t i = 0; i < 1000; ++i)
    {
        TrackingHit hit;
        hit.type = static_cast<EHitType>(1 + i % 6);
        hit.onceOnly = i % 4 == 0;
        std::size_t left = sizes[i * 7 % std::size(sizes)];
        for (std::size_t f = i; left > 0; ++f, left /= 2)
            (hit.*fields[f % 5]).append(left - left / 2, static_cast<wchar_t>(i + f));
        queue.Append(ViewHit(hit));
        expected.push_back(hit);
        if (i % 2 == 1)
            take();
        if (i % 500 != 499)
            continue;
        EXPECT_GT(liveArrays, arrays + 100);
        while (!expected.empty())
            take();
        EXPECT_EQ(queue.Take(), TrackingHit());
        EXPECT_LE(liveArrays, arrays + 1) << "an idle queue keeps one block at the most";
    }
}

TEST(HitQueue, KeepsTheOrderOfEachThread)
{
    constexpr int perThread = 2000;
    CHitQueue queue;
    const auto report = [&](wchar_t name) {
        for (int i = 0; i < perThread; ++i)
            queue.Append(MakeMessageHit(name + std::to_wstring(i)));
    };
    std::thread other(report, L'a');
    report(L'b');
    std::vector<std::wstring> taken;
    while (taken.size() < 2 * perThread)
        if (TrackingHit hit = queue.Take(); hit.type != EHitType::None)
            taken.push_back(hit.field5);
    other.join();
    int next[2] = {};
    for (const std::wstring& text : taken)
        EXPECT_EQ(text.substr(1), std::to_wstring(next[text[0] - L'a']++));
}

} // namespace
