#include "app/Startup.h"

#include "base/Log.h"

#include <fmt/format.h>

namespace vellumor::Startup {

namespace {

Outcome handOver(SingleInstance& instance, int pid)
{
    instance.activateOther();
    log(Tag::main, fmt::format("another Vellumor (pid {}) is already running — handing over", pid));
    return Outcome::handedOver;
}

} // namespace

Mode mode(const Environment& environment)
{
    return value(environment, "VELLUMOR_DIAG") == "1" ? Mode::diagnostics : Mode::application;
}

bool isForeignRoot(unsigned effectiveUser, std::optional<unsigned> homeOwner)
{
    return effectiveUser == 0 && homeOwner && *homeOwner != 0;
}

Outcome begin(SingleInstance& instance, Screen screen,
              std::function<void(const std::string& activationToken)> onActivate)
{
    if (const auto pid = instance.otherCopy())
        return handOver(instance, *pid);
    if (screen == Screen::absent) {
        log(Tag::main, "no display — cannot start");
        return Outcome::noDisplay;
    }
    if (const auto pid = instance.claim(std::move(onActivate)))
        return handOver(instance, *pid); // two starts at the same moment
    return Outcome::run;
}

} // namespace vellumor::Startup
