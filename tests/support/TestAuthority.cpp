#include "support/TestAuthority.h"

#include <QFile>
#include <QHostAddress>
#include <QProcess>
#include <QSslCertificate>
#include <QSslKey>
#include <QStringList>

#include <stdexcept>

namespace vellumor::test {

using namespace Qt::StringLiterals;

namespace {

void runOpenssl(const QStringList& arguments)
{
    QProcess openssl;
    openssl.start(u"openssl"_s, arguments);
    if (!openssl.waitForFinished(20000) || openssl.exitStatus() != QProcess::NormalExit ||
        openssl.exitCode() != 0)
        throw std::runtime_error("openssl: " + openssl.errorString().toStdString() + ": " +
                                 openssl.readAllStandardError().toStdString());
}

QByteArray contentsOf(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("cannot read " + path.toStdString());
    return file.readAll();
}

QStringList speaksFor(const std::string& name)
{
    const QString host = QString::fromStdString(name);
    const bool isAddress = !QHostAddress(host).isNull();
    return {u"-addext"_s, u"subjectAltName="_s + (isAddress ? u"IP:"_s : u"DNS:"_s) + host};
}

} // namespace

TestAuthority::TestAuthority()
{
    makeCertificate(u"authority"_s, {});
}

QSslConfiguration TestAuthority::issue(const std::string& name) const
{
    const QString stem = u"issued"_s;
    const QStringList signedBy{u"-CA"_s,     file(u"authority.pem"_s),
                               u"-CAkey"_s,  file(u"authority.key"_s),
                               u"-addext"_s, u"basicConstraints=critical,CA:FALSE"_s};
    makeCertificate(stem, signedBy + speaksFor(name));
    return serverSide(stem);
}

QSslConfiguration TestAuthority::selfSigned(const std::string& name) const
{
    const QString stem = u"alone"_s;
    makeCertificate(stem, speaksFor(name));
    return serverSide(stem);
}

QSslConfiguration TestAuthority::trust() const
{
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setCaCertificates(
        QSslCertificate::fromData(contentsOf(file(u"authority.pem"_s))));
    return configuration;
}

void TestAuthority::makeCertificate(const QString& stem, const QStringList& more) const
{
    const QString request = u"req -x509 -nodes -days 2 -newkey ec"
                            " -pkeyopt ec_paramgen_curve:prime256v1"_s;
    runOpenssl(request.split(u' ') +
               QStringList{u"-subj"_s, u"/CN=Loopback "_s + stem, u"-keyout"_s,
                           file(stem + u".key"_s), u"-out"_s, file(stem + u".pem"_s)} +
               more);
}

QSslConfiguration TestAuthority::serverSide(const QString& stem) const
{
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    configuration.setLocalCertificate(QSslCertificate(contentsOf(file(stem + u".pem"_s))));
    configuration.setPrivateKey(QSslKey(contentsOf(file(stem + u".key"_s)), QSsl::Ec));
    return configuration;
}

} // namespace vellumor::test
