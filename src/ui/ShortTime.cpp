#include "ui/ShortTime.h"

#include "base/LocalTime.h"

#include <QRegularExpression>
#include <QTime>

namespace vellumor {

std::string shortTimeText(Instant instant, const QLocale& locale)
{
    const std::tm local = LocalTime::fields(instant);
    const QTime time(local.tm_hour, local.tm_min);
    if (locale.language() == QLocale::C)
        return time.toString(QStringLiteral("HH:mm")).toStdString();
    QString format = locale.timeFormat(QLocale::ShortFormat);
    static const QRegularExpression seconds(QStringLiteral("[^\\w\\s]?\\s*ss?"));
    format.remove(seconds);
    return locale.toString(time, format.trimmed()).toStdString();
}

} // namespace vellumor
