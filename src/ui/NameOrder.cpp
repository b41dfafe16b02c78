#include "ui/NameOrder.h"

#include <QCollator>
#include <QLocale>

namespace vellumor {

bool namesInOrder(const std::string& a, const std::string& b)
{
    const QString first = QString::fromStdString(a);
    const QString second = QString::fromStdString(b);
    if (QLocale().language() == QLocale::C) // has no rules but the order of bytes
        return first.toCaseFolded() < second.toCaseFolded();
    QCollator collator;
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    return collator.compare(first, second) < 0;
}

} // namespace vellumor
