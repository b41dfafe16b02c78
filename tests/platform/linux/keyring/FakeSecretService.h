#pragma once

#include "support/private_bus/PrivateBus.h"

#include <set>
#include <string>
#include <vector>

namespace vellumor::test {

// A Secret Service with fixed items on a private bus, which writes down every call that it gets.
class FakeSecretService {
public:
    struct Item {
        std::string service;
        std::string state; // see fake_secret_service.py
        std::string secret;
    };
    struct Behaviour {
        std::string
            option; // what it does instead of answering `call`; empty: it answers all of them
        std::string call;
    };

    // Waits until it is on the bus.
    FakeSecretService(const PrivateBus& bus, const std::vector<Item>& items,
                      const Behaviour& behaviour = {});

    // The different calls so far, as "Kind.Member".
    [[nodiscard]] std::set<std::string> calls() const;

private:
    std::string m_log;
    ChildProcess m_process;
};

} // namespace vellumor::test
