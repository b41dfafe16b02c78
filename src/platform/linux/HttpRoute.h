#pragma once

#include "usage/RedirectPolicy.h"

#include <QString>
#include <QUrl>

#include <string>

namespace vellumor {

// Where one request goes next, and whether the token goes along. Pure.
class HttpRoute {
public:
    HttpRoute(const std::string& url, bool hasToken)
        : m_url(withoutUser(QUrl(QString::fromStdString(url), QUrl::StrictMode)))
        , m_origin(m_url.host().toStdString())
        , m_carriesToken(hasToken)
    {
    }

    // `location` as the answer names it, relative or not.
    void follow(const QByteArray& location)
    {
        const QUrl next = withoutUser(m_url.resolved(QUrl(QString::fromUtf8(location))));
        if (RedirectPolicy::shouldStripAuthorization(m_origin, next.host().toStdString()))
            m_carriesToken = false;
        if (m_url.scheme() == u"https" && next.scheme() != u"https")
            m_carriesToken = false;
        m_url = next;
    }

    [[nodiscard]] const QUrl& url() const { return m_url; }
    [[nodiscard]] bool carriesToken() const { return m_carriesToken; }
    // True for an address of http or https that names a host.
    [[nodiscard]] bool canBeAsked() const
    {
        return m_url.isValid() && !m_url.host().isEmpty() &&
               (m_url.scheme() == u"https" || m_url.scheme() == u"http");
    }

private:
    // Qt would send a name and password of the address at a server's demand.
    static QUrl withoutUser(QUrl url)
    {
        url.setUserInfo(QString());
        return url;
    }

    QUrl m_url;
    std::string m_origin; // the host of the first request
    bool m_carriesToken;  // stays false once it is
};

} // namespace vellumor
