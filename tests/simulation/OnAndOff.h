#pragma once

#include "simulation/QuickFileCalls.h"
#include "simulation/SimulatedProgram.h"
#include "simulation/Timeline.h"

#include <cstdint>
#include <memory>
#include <random>
#include <vector>

namespace vellumor::simulation {

// One account whose program is on for some hours or days and then off for as long, and now and then
// for weeks; everything else is well. Remembers what truly happened.
class OnAndOff {
public:
    static constexpr std::chrono::seconds interval{1800};
    static constexpr std::chrono::hours shortestOn{3};
    static constexpr std::chrono::hours shortestOff{2};

    struct Spell { // in which the program was on
        Instant from{};
        Instant to{};
    };

    explicit OnAndOff(std::uint32_t seed);
    OnAndOff(const OnAndOff&) = delete;
    OnAndOff& operator=(const OnAndOff&) = delete;
    ~OnAndOff();

    // From the start of the account's first week on.
    void run(int weeks);

    [[nodiscard]] Instant start() const { return m_start; }
    [[nodiscard]] const std::vector<Spell>& spells() const { return m_spells; }
    // When the endpoint gave a reading.
    [[nodiscard]] const std::vector<Instant>& readings() const { return m_readings; }
    // What the endpoint says at a moment of a window that began with the first week and resets
    // after each `length`.
    [[nodiscard]] double percentAt(Instant moment, std::chrono::hours length) const;

    // Each receipt that the program has published, in this order.
    [[nodiscard]] const WeeklyReceipts& published() const { return m_published; }
    // What the file holds now.
    [[nodiscard]] WeeklyReceipts kept() const;

private:
    [[nodiscard]] SimulatedProgram::World world();
    void settle();
    void turnOn();
    void turnOff();
    void use();
    void look();
    [[nodiscard]] milliseconds between(milliseconds least, milliseconds most);

    std::mt19937 m_random;
    test::FakeClock m_clock{test::instant("2026-03-02T06:00:00Z")};
    Instant m_start = m_clock.now();
    Worker m_worker;
    QuickFileCalls m_calls;
    FileStore m_files{m_calls};
    Timeline m_timeline{m_clock, [this] { settle(); }};
    Home m_home;
    Folders m_folders{m_home.path(), m_home.path() + "/data", m_home.path() + "/config"};
    Endpoint m_endpoint;
    std::unique_ptr<SimulatedProgram> m_program; // null while it is off
    std::vector<Spell> m_spells;
    std::vector<Instant> m_readings;
    WeeklyReceipts m_published;
};

} // namespace vellumor::simulation
