#pragma once

#include "simulation/Endpoint.h"
#include "simulation/SimulatedProgram.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vellumor::simulation {

// What the run of one scenario came to.
struct Figures {
    int accounts = 0;
    double hoursAwake = 0; // and online
    int calls = 0;         // of the program
    int siblingCalls = 0;
    int refusals = 0;     // 429 answers, of both
    int largestBurst = 0; // most calls of the program within a second
    double meanAge = 0;   // seconds, of the readings of accounts that are well
    double oldestAge = 0; // seconds
    int rounds = 0;
    int ticks = 0;
    std::vector<std::size_t> heapByWeek; // bytes in use at the end of each whole week
};

// Keeps the promises of the program's budget: each call is judged as it comes, and the readings
// twice a minute. A broken promise is a line of text.
class Watch {
public:
    Watch(Timeline& timeline, const Home& home, const Endpoint& endpoint);

    // A run of the program begins, or has ended.
    void follow(SimulatedProgram* program);
    void onCall(const Endpoint::Call& call);
    void onTick();
    // From now on a full round is due, or one by hand.
    void onRound(bool byHand);
    // A call that follows a renewed token is the second one of its fetch.
    void onRevival(int account) { m_revivedAt[account] = m_timeline.now(); }
    // The program cannot have fresh readings of this account before `delay` is over; account -1
    // stands for all.
    void excuse(int account, milliseconds delay);
    // After a step of the wall clock the marks of the past mean nothing.
    void excuseWallClock() { m_isWallClockSound = false; }
    void look();

    [[nodiscard]] Figures figures() const;
    [[nodiscard]] const std::vector<std::string>& broken() const { return m_broken; }

private:
    struct Past {
        std::optional<milliseconds> tick;          // the last call, if a tick made it
        std::optional<milliseconds> leastInterval; // the least effective interval since then
        std::optional<milliseconds> wait;          // after a refusal, until when
        double span = 0;                           // of the last refusal, in seconds
        std::optional<milliseconds> block;         // after a 403, until when
    };
    struct Round {
        milliseconds end{}; // by then it is over
        bool byHand = false;
    };

    void judgeSpacing(const Endpoint::Call& call, bool isTick, bool isRevival);
    void judgePermission(const Endpoint::Call& call);
    void noteAnswer(const Endpoint::Call& call, bool isRevival);
    void noteInterval();
    void lookAt(int account);
    void report(const std::string& promise, int account);
    [[nodiscard]] std::optional<std::string> idOf(int account) const;
    [[nodiscard]] bool isTroubled(int account) const;
    [[nodiscard]] milliseconds recovery() const;

    Timeline& m_timeline;
    const Home& m_home;
    const Endpoint& m_endpoint;
    SimulatedProgram* m_program = nullptr;
    std::map<int, Past> m_past; // by account, the calls of the program
    std::map<int, milliseconds> m_revivedAt;
    std::map<int, milliseconds> m_excusedUntil;
    std::optional<Endpoint::Call> m_last; // unless a round has begun since
    std::optional<milliseconds> m_lastTickCall;
    std::optional<milliseconds> m_leastSlot; // since then
    std::size_t m_inTurn = 0;                // accounts that ticks go round
    milliseconds m_lastTick{};               // or an excuse for its absence
    milliseconds m_lastTickEnd{};
    std::vector<Round> m_rounds;        // that may still be under way
    std::vector<milliseconds> m_recent; // the calls of the last second
    bool m_isWallClockSound = true;
    Figures m_figures;
    double m_ageSum = 0;
    int m_ages = 0;
    std::vector<std::string> m_broken;
};

} // namespace vellumor::simulation
