#pragma once

#include <QString>

#include <string>

namespace vellumor {

// A text for one line: what would break or control it is one blank, everything else as it stands.
[[nodiscard]] inline QString oneLine(const std::string& text)
{
    QString line;
    for (const QChar c : QString::fromStdString(text)) {
        const QChar::Category category = c.category();
        const bool breaks = category == QChar::Other_Control || category == QChar::Separator_Line ||
                            category == QChar::Separator_Paragraph;
        if (!breaks)
            line += c;
        else if (!line.endsWith(u' '))
            line += u' ';
    }
    return line.trimmed();
}

} // namespace vellumor
