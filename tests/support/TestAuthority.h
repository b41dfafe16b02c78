#pragma once

#include <QSslConfiguration>
#include <QString>
#include <QTemporaryDir>

#include <string>

namespace vellumor::test {

// A certificate authority that lives as long as a test. Its keys are made by the `openssl` command
// in a temporary folder and are gone with it. Every failure throws std::runtime_error.
class TestAuthority {
public:
    TestAuthority();

    // What a server needs to speak for `name`, a host name or an IPv4 address.
    [[nodiscard]] QSslConfiguration issue(const std::string& name) const;
    // The same with a certificate that vouches for itself.
    [[nodiscard]] QSslConfiguration selfSigned(const std::string& name) const;
    // What a client needs to trust this authority, and no other.
    [[nodiscard]] QSslConfiguration trust() const;

private:
    [[nodiscard]] QString file(const QString& name) const { return m_folder.filePath(name); }
    void makeCertificate(const QString& stem, const QStringList& more) const;
    [[nodiscard]] QSslConfiguration serverSide(const QString& stem) const;

    QTemporaryDir m_folder;
};

} // namespace vellumor::test
