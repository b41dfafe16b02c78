#pragma once

#include "async/Task.h"
#include "base/Clock.h"
#include "platform/HttpTransport.h"
#include "updates/UpdateResult.h"
#include "updates/UpdateStore.h"
#include "updates/feed/ReleaseFeed.h"

#include <memory>
#include <optional>
#include <string>

namespace vellumor {

// Asks the maker's feed for the newest release. It only tells: nothing is fetched, installed or
// opened here. Main thread only.
class UpdateChecker {
public:
    // What the person who builds the program chooses; feed and key are empty by default.
    struct Settings {
        std::string feed;    // the address, of https
        std::string key;     // the maker's public key, in base64
        std::string website; // the maker's; a release's page must be on it
        std::string version; // of this program
    };

    // `transport` must not follow redirects, so that no answer but that of the feed's own host is
    // looked at. Everything borrowed outlives the checker.
    UpdateChecker(HttpTransport& transport, UpdateStore& store, const Clock& clock,
                  const Settings& settings);

    // Once, without waiting for anything that is under way. What was seen is kept in the store.
    // When the checker goes meanwhile, the answer is lost and the check counts as failed.
    [[nodiscard]] Task<UpdateResult> check();

    // Only then is there anything to ask; otherwise the controls are to be disabled.
    [[nodiscard]] bool isConfigured() const { return m_key.has_value(); }

private:
    [[nodiscard]] UpdateResult resultOf(const HttpAnswer& answer);
    [[nodiscard]] UpdateResult judge(const ReleaseFeed& feed);
    void noteAnswer(int serial);

    HttpTransport& m_transport;
    UpdateStore& m_store;
    const Clock& m_clock;
    std::string m_feed;
    std::string m_website;
    std::optional<ReleaseFeed::Key> m_key; // only with all settings as they should be
    ReleaseVersion m_version;
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
};

} // namespace vellumor
