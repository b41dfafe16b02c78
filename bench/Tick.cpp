#include "FourFullWeeks.h"
#include "Ratio.h"

namespace vellumor::bench {

// The world is made when its row comes: its threads would make every allocation of the other rows
// dearer.
std::vector<Comparison> tick()
{
    const auto made = std::make_shared<std::unique_ptr<FourFullWeeks>>();
    const auto weeks = [made]() -> FourFullWeeks& {
        if (*made == nullptr)
            *made = std::make_unique<FourFullWeeks>();
        return **made;
    };
    Comparison comparison{"a tick with four weeks of history, CPU time",
                          [weeks] { weeks().tick(); },
                          [weeks] { weeks().append(); },
                          100,
                          1,
                          1.5};
    comparison.isCpuTime = true;
    return {comparison};
}

} // namespace vellumor::bench
