#pragma once

#include "ui/PopoverMetrics.h"
#include "ui/Theme.h"
#include "ui/model/HistoryContent.h"
#include "ui/model/PopoverContent.h"

#include <QWidget>

#include <functional>
#include <memory>
#include <vector>

class QScrollArea;
class QVBoxLayout;

namespace vellumor {

class AccountSection;
class HistoryDetailView;
class LinkButton;
class PlainText;
class SymbolButton;
class TransientNoticeBanner;

// The popover's window: shows a PopoverContent and says what was pressed. It decides nothing.
class PopoverView final : public QWidget {
    Q_OBJECT

public:
    struct Actions {
        std::function<void()> settings;
        std::function<void()> refresh;
        std::function<void()> dismissNotice;
        std::function<void()> signInGuide;
        std::function<void(const std::string& configDir)> history;
        std::function<void()> back; // from a history
        std::function<void(const std::string& text)> copy;
        std::function<void(const std::string& extension)> exportAs;
        std::function<void()> close;       // Escape
        std::function<void()> deactivated; // another window has the focus now
    };

    explicit PopoverView(Actions actions);
    ~PopoverView() override;

    // Touches what has changed alone. Resizes itself to the content, up to `mostHeight`; beyond it
    // the list scrolls.
    void setContent(const PopoverContent& content, int mostHeight);
    // Stands in the place of the content's notice, and above a history too. Empty: none.
    void setUrgentNotice(const std::string& notice);
    // One account's history in the place of everything else; without one, the list again.
    void setHistory(std::shared_ptr<const HistoryContent> history);

protected:
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void makeList();
    void makeFooter();
    void setSections(const std::vector<AccountSectionContent>& sections);
    void orderTabs();
    void makeHint();
    void apply(const PopoverContent& content);
    [[nodiscard]] std::string notice() const;
    void setHint();
    void resizeToContent();
    void applyHistory();
    void adoptTheme();

    Actions m_actions;
    PopoverMetrics m_metrics;
    Theme m_theme;
    PopoverContent m_content;
    std::string m_urgentNotice;
    int m_mostHeight = 0;
    bool m_wasActive = false;

    QVBoxLayout* m_column;
    TransientNoticeBanner* m_banner;
    QScrollArea* m_scroll = nullptr;
    QWidget* m_list = nullptr; // within m_scroll
    QVBoxLayout* m_listColumn = nullptr;
    std::vector<AccountSection*> m_sections;
    QWidget* m_hintBox = nullptr;
    PlainText* m_hint = nullptr;
    LinkButton* m_hintLink = nullptr;
    std::shared_ptr<const HistoryContent> m_history; // while it is shown
    HistoryDetailView* m_historyView = nullptr;      // once it was shown
    QWidget* m_footer = nullptr;
    PlainText* m_footerText = nullptr;
    SymbolButton* m_refresh = nullptr;
    SymbolButton* m_settings = nullptr;
};

} // namespace vellumor
