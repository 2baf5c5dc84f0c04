#pragma once

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

namespace pelorin::test {

// Runs a test block in the given TZ and restores the previous one afterwards.
class ScopedTimeZone {
public:
    explicit ScopedTimeZone(const char* zone)
    {
        if (const char* old = std::getenv("TZ"))
            previous_ = old;
        ::setenv("TZ", zone, 1);
        ::tzset();
    }
    ~ScopedTimeZone()
    {
        if (previous_)
            ::setenv("TZ", previous_->c_str(), 1);
        else
            ::unsetenv("TZ");
        ::tzset();
    }
    ScopedTimeZone(const ScopedTimeZone&) = delete;
    ScopedTimeZone& operator=(const ScopedTimeZone&) = delete;

private:
    std::optional<std::string> previous_;
};

}  // namespace pelorin::test
