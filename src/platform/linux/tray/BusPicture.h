#pragma once

#include "platform/StatusItem.h"

#include <QByteArray>
#include <QColor>
#include <QDBusArgument>
#include <QImage>
#include <QList>
#include <QMetaType>

namespace vellumor {

// A picture as org.kde.StatusNotifierItem sends it, (iiay): the bytes are alpha, red, green, blue,
// line after line, the colours not multiplied with the alpha.
struct BusPicture {
    int width = 0;
    int height = 0;
    QByteArray bytes;

    bool operator==(const BusPicture&) const = default;
};
using BusPictures = QList<BusPicture>;

// (sa(iiay)ss): an icon's name, pictures, a title, a text.
struct BusToolTip {
    QString iconName;
    BusPictures pictures;
    QString title;
    QString text;
};

QDBusArgument& operator<<(QDBusArgument& argument, const BusPicture& picture);
const QDBusArgument& operator>>(const QDBusArgument& argument, BusPicture& picture);
QDBusArgument& operator<<(QDBusArgument& argument, const BusToolTip& toolTip);
const QDBusArgument& operator>>(const QDBusArgument& argument, BusToolTip& toolTip);
void registerBusPictures(); // once before any of these is sent

// A template in the panel's colour: the shape stays, every pixel's colour becomes `tint`.
[[nodiscard]] QImage tinted(const QImage& picture, const QColor& tint);
[[nodiscard]] BusPicture busPicture(const QImage& picture);
[[nodiscard]] BusPictures busPictures(const StatusLabel::Scales& scales, const QColor& tint);

} // namespace vellumor

Q_DECLARE_METATYPE(vellumor::BusPicture)
Q_DECLARE_METATYPE(vellumor::BusToolTip)
