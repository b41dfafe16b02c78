#include "platform/linux/tray/BusPicture.h"

#include <QDBusMetaType>
#include <QtEndian>

#include <span>

namespace vellumor {

QDBusArgument& operator<<(QDBusArgument& argument, const BusPicture& picture)
{
    argument.beginStructure();
    argument << picture.width << picture.height << picture.bytes;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, BusPicture& picture)
{
    argument.beginStructure();
    argument >> picture.width >> picture.height >> picture.bytes;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const BusToolTip& toolTip)
{
    argument.beginStructure();
    argument << toolTip.iconName << toolTip.pictures << toolTip.title << toolTip.text;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, BusToolTip& toolTip)
{
    argument.beginStructure();
    argument >> toolTip.iconName >> toolTip.pictures >> toolTip.title >> toolTip.text;
    argument.endStructure();
    return argument;
}

void registerBusPictures()
{
    qDBusRegisterMetaType<BusPicture>();
    qDBusRegisterMetaType<BusPictures>();
    qDBusRegisterMetaType<BusToolTip>();
}

// Not by a QPainter, which would multiply with the alpha and divide by it again.
QImage tinted(const QImage& picture, const QColor& tint)
{
    constexpr QRgb alpha = 0xff000000;
    QImage filled = picture.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < filled.height(); ++y) {
        const std::span line(reinterpret_cast<QRgb*>(filled.scanLine(y)),
                             static_cast<std::size_t>(filled.width()));
        for (QRgb& pixel : line)
            pixel = (pixel & alpha) | (tint.rgb() & ~alpha);
    }
    return filled;
}

BusPicture busPicture(const QImage& picture)
{
    const QImage plain = picture.convertToFormat(QImage::Format_ARGB32);
    const auto count = static_cast<qsizetype>(plain.width());
    BusPicture sent{plain.width(), plain.height(), QByteArray(count * plain.height() * 4, '\0')};
    for (int y = 0; y < plain.height(); ++y)
        qToBigEndian<quint32>(plain.constScanLine(y), count, sent.bytes.data() + y * count * 4);
    return sent;
}

BusPictures busPictures(const StatusLabel::Scales& scales, const QColor& tint)
{
    BusPictures pictures;
    for (const QImage& picture : scales) {
        if (!picture.isNull())
            pictures.append(busPicture(tinted(picture, tint)));
    }
    return pictures;
}

} // namespace vellumor
