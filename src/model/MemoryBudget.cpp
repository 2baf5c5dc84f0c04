#include "model/MemoryBudget.h"

namespace pelorin {

MemoryBudget::Share::Share(MemoryBudget& budget, std::int64_t bytes) : budget_(budget), bytes_(bytes)
{
    budget_.take(bytes_);
}

MemoryBudget::Share::~Share() { budget_.giveBack(bytes_); }

std::int64_t MemoryBudget::inUse() const
{
    const std::lock_guard lock(mutex_);
    return used_;
}

void MemoryBudget::take(std::int64_t bytes)
{
    std::unique_lock lock(mutex_);
    freed_.wait(lock, [&] { return used_ == 0 || used_ + bytes <= limit_; });
    used_ += bytes;
}

void MemoryBudget::giveBack(std::int64_t bytes)
{
    {
        const std::lock_guard lock(mutex_);
        used_ -= bytes;
    }
    freed_.notify_all();
}

MemoryBudget& wholePhotoRewriteBudget()
{
    // Sources of 64 MiB in all at once, each with exiv2's copy beside it; a larger one alone.
    static MemoryBudget budget(64 * 1024 * 1024);
    return budget;
}

}  // namespace pelorin
