#pragma once

#include "platform/Keyring.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace vellumor::test {

// A keyring in memory. It notes each call, in order, as "services" or "read SERVICE"; callable from
// any thread.
class FakeKeyring final : public Keyring {
public:
    void put(const std::string& service, std::string secret)
    {
        putItem(service, {RawCredential::found, std::move(secret)});
    }
    // An item that is listed, and that cannot be read for the reason `status`.
    void putUnreadable(const std::string& service, int status) { putItem(service, {status, {}}); }
    // As before the first unlocking: no item is listed, but those that are asked for by name.
    void hideFromListing()
    {
        const std::scoped_lock lock(m_mutex);
        m_listed = false;
    }

    [[nodiscard]] std::vector<std::string>
    services(const std::vector<std::string>& expected) override
    {
        const std::scoped_lock lock(m_mutex);
        m_calls.emplace_back("services");
        std::vector<std::string> names;
        // Backwards, so that nobody takes the order for sorted.
        for (auto item = m_items.rbegin(); item != m_items.rend(); ++item) {
            const bool asked =
                std::find(expected.begin(), expected.end(), item->first) != expected.end();
            if (m_listed || asked)
                names.push_back(item->first);
        }
        return names;
    }

    [[nodiscard]] RawCredential read(const std::string& service) override
    {
        const std::scoped_lock lock(m_mutex);
        m_calls.push_back("read " + service);
        const auto item = m_items.find(service);
        if (item == m_items.end())
            return {};
        return {item->second.status, SecretBytes(std::string_view(item->second.secret))};
    }

    [[nodiscard]] std::vector<std::string> calls() const
    {
        const std::scoped_lock lock(m_mutex);
        return m_calls;
    }

private:
    struct Item {
        int status = RawCredential::found;
        std::string secret;
    };

    void putItem(const std::string& service, Item item)
    {
        const std::scoped_lock lock(m_mutex);
        m_items.insert_or_assign(service, std::move(item));
    }

    mutable std::mutex m_mutex;
    std::map<std::string, Item> m_items;
    std::vector<std::string> m_calls;
    bool m_listed = true;
};

} // namespace vellumor::test
