#pragma once

#include "ui/settings/SettingsTab.h"

#include <QAbstractButton>

namespace vellumor {

// One tab of the row at the window's top: a symbol over its title.
class TabBarButton final : public QAbstractButton {
    Q_OBJECT

public:
    TabBarButton(SettingsTab tab, QWidget* parent);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    SettingsTab m_tab;
};

} // namespace vellumor
