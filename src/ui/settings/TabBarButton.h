#pragma once

#include "ui/FlatButton.h"
#include "ui/settings/SettingsTab.h"

namespace vellumor {

// One tab of the row at the window's top: a symbol over its title.
class TabBarButton final : public FlatButton {
    Q_OBJECT

public:
    TabBarButton(SettingsTab tab, QWidget* parent);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    SettingsTab m_tab;
    QColor m_drawnColour;
    QPixmap m_drawn; // in that colour; null until needed
};

} // namespace vellumor
