#pragma once

#include <cstdlib>
#include <ctime>
#include <string>

namespace vellumor::test {

// Another time zone for as long as it lives.
class ScopedZone {
public:
    explicit ScopedZone(const char* zone)
        : m_before(zoneNow())
    {
        set(zone);
    }
    ScopedZone(const ScopedZone&) = delete;
    ScopedZone& operator=(const ScopedZone&) = delete;
    ~ScopedZone() { set(m_before.c_str()); }

private:
    static std::string zoneNow()
    {
        const char* const zone = std::getenv("TZ");
        return zone == nullptr ? "Asia/Kolkata" : zone;
    }
    static void set(const char* zone)
    {
        ::setenv("TZ", zone, 1);
        ::tzset();
    }

    std::string m_before;
};

} // namespace vellumor::test
