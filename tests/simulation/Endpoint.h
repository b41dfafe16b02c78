#pragma once

#include "async/Task.h"
#include "base/Clock.h"
#include "platform/HttpTransport.h"
#include "simulation/Timeline.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vellumor::simulation {

// A token bucket: `capacity` requests at once, one more every `refill`.
class TokenBucket {
public:
    TokenBucket(double capacity, milliseconds refill)
        : m_capacity(capacity)
        , m_refill(refill)
        , m_level(capacity)
    {
    }
    [[nodiscard]] bool take(milliseconds now);
    void drain(milliseconds now);

private:
    void fill(milliseconds now);

    double m_capacity;
    milliseconds m_refill;
    double m_level;
    milliseconds m_filledAt{};
};

// A model of the usage endpoint: who asks too fast is refused, each account's limits fill and
// reset, and now and then it is unwell.
class Endpoint final : public HttpTransport {
public:
    enum class Mood { well, forbidding, failing, babbling, silent };
    enum class Caller { program, sibling };

    struct Call {
        milliseconds at{};
        int account = -1; // -1: a token that nobody has
        int status = 0;   // 0: no answer at all
        Caller caller = Caller::program;
    };

    // `accountOf` gives whose token it is, if it is valid now.
    Endpoint(Timeline& timeline, Clock& clock,
             std::function<std::optional<int>(std::string_view token)> accountOf,
             std::function<int(std::string_view token)> ownerOf);

    // What the program does: the answer takes a while.
    [[nodiscard]] Task<HttpAnswer> get(HttpRequest request) override;
    // What another program does: at once.
    [[nodiscard]] HttpAnswer answer(std::string_view token, Caller caller);

    void setMood(int account, Mood mood);
    [[nodiscard]] Mood mood(int account) const;
    // Somebody else behind the same address uses up what is allowed.
    void drain() { m_bucket.drain(m_timeline.now()); }

    std::function<void(const Call&)> onCall;

private:
    [[nodiscard]] HttpAnswer answerTo(std::string_view token, int owner);
    [[nodiscard]] std::string body(int account) const;

    Timeline& m_timeline;
    Clock& m_clock;
    std::function<std::optional<int>(std::string_view)> m_accountOf;
    std::function<int(std::string_view)> m_ownerOf;
    std::vector<Mood> m_moods;
    TokenBucket m_bucket{4, std::chrono::seconds(20)};
};

} // namespace vellumor::simulation
