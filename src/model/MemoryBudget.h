#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace pelorin {

// A number of bytes that the threads of a batch share out: a file whose work must hold all of
// it in memory at once waits until its size fits in what the others leave free. One file is
// always let through, however large, so the batch never stops; what it bounds is how many large
// ones are in memory together, which the thread count alone does not on a machine of many cores.
class MemoryBudget {
public:
    explicit MemoryBudget(std::int64_t bytes) : limit_(bytes) {}

    // Held while the bytes are in use; given back when it goes.
    class Share {
    public:
        Share(MemoryBudget& budget, std::int64_t bytes);
        ~Share();
        Share(const Share&) = delete;
        Share& operator=(const Share&) = delete;

    private:
        MemoryBudget& budget_;
        std::int64_t bytes_;
    };

    std::int64_t inUse() const;

private:
    void take(std::int64_t bytes);
    void giveBack(std::int64_t bytes);

    const std::int64_t limit_;
    std::int64_t used_ = 0;
    mutable std::mutex mutex_;
    std::condition_variable freed_;
};

// The budget of the photo rewrites that hold a whole file (and exiv2's rewritten copy) in
// memory: the kinds whose metadata is not read apart from their image data (JPEG 2000,
// Photoshop, GIF ...) and files of an odd structure.
MemoryBudget& wholePhotoRewriteBudget();

}  // namespace pelorin
