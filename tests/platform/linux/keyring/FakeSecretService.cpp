#include "platform/linux/keyring/FakeSecretService.h"

#include <fstream>

namespace vellumor::test {

namespace {

ChildProcess::Command commandFor(const PrivateBus& bus,
                                 const std::vector<FakeSecretService::Item>& items,
                                 const FakeSecretService::Behaviour& behaviour,
                                 const std::string& log)
{
    auto command = bus.command({"/usr/bin/python3", VELLUMOR_FAKE_SECRET_SERVICE, log}, "fake.log");
    for (const auto& [service, state, secret] : items) {
        const std::string file = bus.file("secret" + std::to_string(command.arguments.size()));
        std::ofstream(file, std::ios::binary) << secret;
        command.arguments.insert(command.arguments.end(), {"--item", service, state, file});
    }
    if (!behaviour.option.empty())
        command.arguments.insert(command.arguments.end(), {behaviour.option, behaviour.call});
    return command;
}

} // namespace

FakeSecretService::FakeSecretService(const PrivateBus& bus, const std::vector<Item>& items,
                                     const Behaviour& behaviour)
    : m_log(bus.file("secret-service-calls"))
    , m_process(commandFor(bus, items, behaviour, m_log))
{
    bus.waitFor("org.freedesktop.secrets");
}

std::set<std::string> FakeSecretService::calls() const
{
    std::set<std::string> calls;
    std::ifstream log(m_log);
    for (std::string call; std::getline(log, call);)
        calls.insert(call);
    return calls;
}

} // namespace vellumor::test
