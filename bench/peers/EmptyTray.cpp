// A place in the panel with a menu, and nothing else: what any program of this kind costs before it
// does anything of its own. With an address it also asks a server there once, at the start.

#include <QApplication>
#include <QMenu>
#include <QNetworkAccessManager>
#include <QNetworkInformation>
#include <QNetworkReply>
#include <QSystemTrayIcon>
#include <QUrl>

#include <cstdio>

namespace {

constexpr int iconSize = 22;

QIcon plainIcon()
{
    QPixmap picture(iconSize, iconSize);
    picture.fill(Qt::gray);
    return picture;
}

void ask(QNetworkAccessManager& network, const QString& address)
{
    QNetworkReply* const reply = network.get(QNetworkRequest(QUrl(address)));
    // Whoever answers will do: the certificate is one that nobody has signed.
    QObject::connect(reply, &QNetworkReply::sslErrors, reply,
                     [reply] { reply->ignoreSslErrors(); });
    QObject::connect(reply, &QNetworkReply::finished, reply, [reply] {
        reply->readAll();
        reply->deleteLater();
    });
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QMenu menu;
    menu.addAction(QStringLiteral("Quit"), &application, &QCoreApplication::quit);
    QSystemTrayIcon item(plainIcon());
    item.setContextMenu(&menu);
    item.show();
    if (!QNetworkInformation::loadBackendByFeatures(QNetworkInformation::Feature::Reachability))
        std::fputs("nothing tells whether there is a network\n", stderr);
    QNetworkAccessManager network;
    if (argc > 1)
        ask(network, QString::fromLocal8Bit(argv[1]));
    return QApplication::exec();
}
