#pragma once

#include "simulation/Endpoint.h"
#include "simulation/Home.h"
#include "store/FileStore.h"
#include "store/Folders.h"
#include "usage/caches/SharedCache.h"

#include <random>
#include <string>

namespace vellumor::simulation {

// Another application of the toolkit on the same machine, with the same manners: one account a
// minute, nothing that is fresh already, nothing during a backoff.
class Sibling {
public:
    Sibling(Timeline& timeline, const Clock& clock, const FileStore& files, const Folders& folders,
            Home& home, Endpoint& endpoint);

    void start();
    void stop() { m_isRunning = false; }
    void setOnline(bool isOnline) { m_isOnline = isOnline; }

private:
    void tick();
    void poll(int account);
    void claim() const;

    Timeline& m_timeline;
    const Clock& m_clock;
    const FileStore& m_files;
    std::string m_heartbeatFile;
    SharedCache m_cache;
    Home& m_home;
    Endpoint& m_endpoint;
    bool m_isRunning = false;
    bool m_isOnline = true;
    int m_next = 0;
};

// What a broken program could leave in the shared folder: bytes, cut files, JSON of other shapes,
// absurd values, and now and then nothing at all.
class Vandal {
public:
    Vandal(std::mt19937& random, std::string sharedFolder);

    void strike();

private:
    [[nodiscard]] std::string nonsense(const std::string& present);

    std::mt19937& m_random;
    std::string m_folder;
};

} // namespace vellumor::simulation
