#include "usage/ApiBase.h"

#include "base/Log.h"

#include <QUrl>

namespace vellumor::ApiBase {

namespace {

constexpr const char* usagePath = "/api/oauth/usage";

std::string withoutClosingSlash(std::string address)
{
    while (address.ends_with('/'))
        address.pop_back();
    return address;
}

// A URL's host comes normalised: what reads as an address stands there in its plain dotted form.
// Whatever else looks like one, as 127.0.0.008 does, is a name to ask for, and is not taken.
bool isThisMachine(const QString& host)
{
    if (host == u"localhost" || host == u"::1")
        return true;
    const auto numbers = host.split(u'.');
    if (numbers.size() != 4 || numbers.front() != u"127")
        return false;
    for (const QString& number : numbers) {
        const ushort value = number.toUShort();
        if (value > 255 || number != QString::number(value))
            return false;
    }
    return true;
}

} // namespace

std::optional<std::string> loopback(const std::string& text)
{
    const QUrl url(QString::fromStdString(text), QUrl::StrictMode);
    const bool web = url.scheme() == u"http" || url.scheme() == u"https";
    if (!url.isValid() || !web || !url.userInfo().isEmpty() || url.hasQuery() ||
        url.hasFragment() || text.find('@') != std::string::npos || !isThisMachine(url.host()))
        return std::nullopt;
    return withoutClosingSlash(url.toString(QUrl::FullyEncoded).toStdString());
}

std::string usageEndpoint(const Environment& environment, const std::string& builtInBase)
{
    const auto wish = value(environment, "VELLUMOR_API_BASE");
    auto base = wish ? loopback(*wish) : std::nullopt;
    if (wish && !base)
        log(Tag::usage, "VELLUMOR_API_BASE is not a loopback address — ignored");
    return withoutClosingSlash(base.value_or(builtInBase)) + usagePath;
}

} // namespace vellumor::ApiBase
