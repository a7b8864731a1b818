#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

namespace {

bool memoryIsOut = false;

// Throws while as many exceptions as `depth` says are being handled.
int ThrowNested(int depth)
{
    try
    {
        throw std::bad_alloc();
    }
    catch (const std::bad_alloc&)
    {
        return depth > 1 ? 1 + ThrowNested(depth - 1) : 1;
    }
}

} // namespace

// The linker sends the runtime's calls of malloc here.
extern "C" void* __real_malloc(std::size_t size);
extern "C" void* __wrap_malloc(std::size_t size)
{
    return memoryIsOut ? nullptr : __real_malloc(size);
}

TEST(RuntimeExceptions, AreThrownAndCaughtWithoutMemory)
{
    EXPECT_EQ(ThrowNested(40), 40);
    for (int round = 0; round < 2; ++round) // the second shows that all reserves were given back
    {
        memoryIsOut = true;
        const int caught = ThrowNested(16);
        memoryIsOut = false;
        EXPECT_EQ(caught, 16);
    }
    EXPECT_DEATH((memoryIsOut = true, ThrowNested(17)), "");
}
