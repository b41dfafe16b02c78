#pragma once

#include "accounts/Account.h"
#include "accounts/ClaudeCredentials.h"
#include "async/Task.h"
#include "async/Worker.h"
#include "base/Clock.h"
#include "platform/HttpTransport.h"
#include "usage/UsageFetchError.h"
#include "usage/model/Usage.h"

#include <functional>
#include <optional>
#include <string>
#include <variant>

namespace vellumor {

// A reading, or why there is none.
using FetchResult = std::variant<Usage, UsageFetchError>;

// The one network call of the program: what the usage endpoint says about one account. Knows
// nothing of caches, waiting or repeating. Main thread only; any number of calls may be under way.
class UsageClient {
public:
    // Reads a credential; blocks, and runs on the worker.
    using ReadCredentials =
        std::function<std::variant<ClaudeCredentials, KeychainError>(const std::string& service)>;

    // Everything borrowed outlives the client; `endpoint` is the whole address.
    UsageClient(HttpTransport& transport, Worker& worker, const Clock& clock,
                ReadCredentials readCredentials, std::string endpoint);

    // With the token of the account's resolved service as it stands now.
    [[nodiscard]] Task<FetchResult> fetch(Account account);
    [[nodiscard]] Task<FetchResult> fetch(Token accessToken);

    // Seconds of a Retry-After header. The whole value must be a number; a date gives nothing, a
    // number too large to hold gives infinity.
    [[nodiscard]] static std::optional<double> parseRetryAfter(const std::string& header);

private:
    [[nodiscard]] HttpRequest requestWith(const Token& accessToken) const;
    [[nodiscard]] FetchResult resultOf(const HttpAnswer& answer) const;

    HttpTransport& m_transport;
    Worker& m_worker;
    const Clock& m_clock;
    ReadCredentials m_readCredentials;
    std::string m_endpoint;
};

} // namespace vellumor
