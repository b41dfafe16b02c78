#include "platform/linux/tray/StatusNotifierItem.h"

#include <utility>

namespace vellumor {

namespace {

constexpr qsizetype longestToken = 4096; // far more than any compositor makes

} // namespace

StatusNotifierItem::StatusNotifierItem(QString id, OnClick onClick)
    : m_id(std::move(id))
    , m_onClick(std::move(onClick))
{
    registerBusPictures();
}

void StatusNotifierItem::setFace(Face face)
{
    const Face before = std::exchange(m_face, std::move(face));
    if (before.pictures != m_face.pictures || before.iconName != m_face.iconName)
        emit NewIcon();
    if (before.text != m_face.text)
        emit NewTitle();
    if (before.toolTip != m_face.toolTip)
        emit NewToolTip();
}

void StatusNotifierItem::Activate(int x, int y)
{
    QMetaObject::invokeMethod(
        this,
        [this, position = QPoint(x, y), token = std::exchange(m_activationToken, {})] {
            m_onClick(position, token);
        },
        Qt::QueuedConnection);
}

void StatusNotifierItem::SecondaryActivate(int x, int y)
{
    Activate(x, y);
}

void StatusNotifierItem::ProvideXdgActivationToken(const QString& token)
{
    if (token.size() <= longestToken)
        m_activationToken = token.toStdString();
}

} // namespace vellumor
