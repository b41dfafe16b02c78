#pragma once

#include "platform/StatusItem.h"

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace vellumor::test {

// Keeps what it is given, and notes in `steps`, which it shares with others, when.
class FakeStatusItem final : public StatusItem {
public:
    explicit FakeStatusItem(std::vector<std::string>& steps)
        : m_steps(steps)
    {
    }

    Handlers handlers;
    std::vector<StatusLabel> labels; // as they came

    void show(Handlers given) override
    {
        handlers = std::move(given);
        m_steps.emplace_back("status item");
    }
    void setLabel(StatusLabel label) override
    {
        m_steps.push_back("label: " + label.text);
        labels.push_back(std::move(label));
    }
    [[nodiscard]] const MenuEntry& entry(const std::string& text) const
    {
        for (const MenuEntry& each : handlers.menu) {
            if (each.text == text)
                return each;
        }
        throw std::runtime_error("no menu entry " + text);
    }

private:
    std::vector<std::string>& m_steps;
};

} // namespace vellumor::test
