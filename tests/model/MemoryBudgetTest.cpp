#include "model/MemoryBudget.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace pelorin {
namespace {

// A file that does not fit beside the ones in memory waits for them; one larger than the whole
// budget goes alone rather than never.
TEST(MemoryBudget, ALargeFileWaitsForRoomAndOneLargerThanAllGoesAlone)
{
    MemoryBudget budget(100);
    std::atomic_bool secondIn{false};
    std::thread second;
    {
        const MemoryBudget::Share first(budget, 80);
        {
            const MemoryBudget::Share small(budget, 20);  // fits beside it
            EXPECT_EQ(budget.inUse(), 100);
        }
        second = std::thread([&] {
            const MemoryBudget::Share share(budget, 50);
            secondIn = true;
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        EXPECT_FALSE(secondIn);
    }
    second.join();
    EXPECT_TRUE(secondIn);
    EXPECT_EQ(budget.inUse(), 0);
    const MemoryBudget::Share huge(budget, 1000);
    EXPECT_EQ(budget.inUse(), 1000);
}

}  // namespace
}  // namespace pelorin
