#include "usage/UsageClient.h"

#include <charconv>
#include <limits>

namespace vellumor {

namespace {

using Kind = UsageFetchError::Kind;

UsageFetchError error(Kind kind, std::string detail = {})
{
    UsageFetchError error;
    error.kind = kind;
    error.detail = std::move(detail);
    return error;
}

UsageFetchError rateLimited(const std::optional<std::string>& header)
{
    UsageFetchError limited = error(Kind::rateLimited);
    if (header)
        limited.retryAfter = UsageClient::parseRetryAfter(*header);
    return limited;
}

// The size of a number that a double cannot tell: too large for one, or too close to zero.
double beyondRange(const std::string& number)
{
    const auto exponent = number.find_first_of("eE");
    const bool negative = exponent != std::string::npos && number[exponent + 1] == '-';
    const auto digit = number.find_first_not_of("+-0");
    const bool fraction = exponent == std::string::npos && number[digit] == '.';
    return negative || fraction ? 0.0 : std::numeric_limits<double>::infinity();
}

UsageFetchError httpError(int status)
{
    UsageFetchError http = error(Kind::http);
    http.status = status;
    return http;
}

} // namespace

UsageClient::UsageClient(HttpTransport& transport, Worker& worker, const Clock& clock,
                         ReadCredentials readCredentials, std::string endpoint)
    : m_transport(transport)
    , m_worker(worker)
    , m_clock(clock)
    , m_readCredentials(std::move(readCredentials))
    , m_endpoint(std::move(endpoint))
{
}

Task<FetchResult> UsageClient::fetch(Account account)
{
    if (!account.resolvedService)
        co_return error(Kind::noService);
    auto read = [this, service = *account.resolvedService] { return m_readCredentials(service); };
    auto credentials = co_await m_worker.run(std::move(read));
    if (const auto* failure = std::get_if<KeychainError>(&credentials))
        co_return error(Kind::keychain, failure->description());
    co_return co_await fetch(std::move(std::get<ClaudeCredentials>(credentials).accessToken));
}

Task<FetchResult> UsageClient::fetch(Token accessToken)
{
    HttpRequest request = requestWith(accessToken);
    const HttpAnswer answer = co_await m_transport.get(std::move(request));
    co_return resultOf(answer);
}

HttpRequest UsageClient::requestWith(const Token& accessToken) const
{
    HttpRequest request;
    request.url = m_endpoint;
    request.bearer = SecretBytes(accessToken.reveal());
    request.headers = {{"anthropic-beta", "oauth-2025-04-20"}, {"anthropic-version", "2023-06-01"}};
    return request;
}

FetchResult UsageClient::resultOf(const HttpAnswer& answer) const
{
    if (answer.kind == HttpAnswer::Kind::tooLarge)
        return error(Kind::decode, "the answer is larger than 4 MiB");
    if (answer.kind == HttpAnswer::Kind::transport)
        return error(Kind::transport, answer.problem);
    switch (answer.status) {
    case 200:
        break;
    case 401:
        return error(Kind::unauthorized);
    case 403:
        return error(Kind::forbidden);
    case 429:
        return rateLimited(answer.retryAfter);
    default:
        return httpError(answer.status);
    }
    auto decoded = Usage::decode(answer.body, m_clock.now());
    if (const auto* failure = std::get_if<Usage::DecodeError>(&decoded))
        return error(Kind::decode, failure->description);
    return std::get<Usage>(std::move(decoded));
}

std::optional<double> UsageClient::parseRetryAfter(const std::string& header)
{
    const char* begin = header.data();
    const char* end = begin + header.size();
    if (header.size() > 1 && header[0] == '+' && header[1] != '-')
        ++begin;
    double seconds = 0;
    const auto [stop, problem] = std::from_chars(begin, end, seconds);
    if (stop != end || header.empty() || problem == std::errc::invalid_argument)
        return std::nullopt;
    if (problem == std::errc::result_out_of_range)
        return header.front() == '-' ? -beyondRange(header) : beyondRange(header);
    return seconds;
}

} // namespace vellumor
