#pragma once

#include "base/Clock.h"
#include "platform/ProcessRunner.h"

namespace vellumor {

// Child processes through QProcess, each the leader of a session of its own.
class QtProcessRunner final : public ProcessRunner {
public:
    // `clock` outlives the runner.
    explicit QtProcessRunner(Clock& clock);

    [[nodiscard]] Task<ProcessResult> run(ProcessRequest request) override;

private:
    Clock& m_clock;
};

} // namespace vellumor
