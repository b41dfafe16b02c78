#pragma once

#include "base/Environment.h"
#include "platform/SingleInstance.h"
#include "platform/linux/InstanceLock.h"

#include <memory>
#include <string>

namespace vellumor {

class ApplicationObject;

// The session-bus name dev.quorle.vellumor with org.freedesktop.Application for the hand-over, and
// a lock file beside the program's data in any case: a copy without a bus and one with it must not
// both poll.
class SingleCopy final : public SingleInstance {
public:
    // `files` outlives this. Needs a QCoreApplication.
    SingleCopy(const FileStore& files, std::string lockPath, const Environment& environment);
    ~SingleCopy() override;

    [[nodiscard]] std::optional<int> otherCopy() override;
    [[nodiscard]] std::optional<int>
    claim(std::function<void(const std::string& activationToken)> onActivate) override;
    void activateOther() override;

private:
    InstanceLock m_lock;
    std::string m_activationToken;
    std::unique_ptr<ApplicationObject> m_object;
};

} // namespace vellumor
