#pragma once

// A navigation bar for pages of entries. It keeps the current page and the
// number of pages, both counted from 1; the entries are its owner's, who
// redraws on the signals.

#include <QWidget>

#include <functional>

class QLabel;
class QLineEdit;
class QPushButton;

class QtPageBar : public QWidget
{
    Q_OBJECT

public:
    static constexpr int maxPages = 100;

    explicit QtPageBar(QWidget *parent = nullptr);

    int currentPage() const { return m_current; }
    int pageCount() const { return m_count; }

    // Starts again at page 1 with this many pages (1 to 100); emits nothing.
    void reset(int pageCount);
    // As jumping to that page; nothing where there is no such page.
    void setCurrentPage(int page);

    // Asked with the number of the page that is to be deleted, while it is still
    // there; false keeps it.
    void setDeleteGuard(std::function<bool(int page)> guard) { m_mayDelete = std::move(guard); }
    // The only page stays when it is deleted, and nothing is emitted. The owner can
    // empty it here.
    void setOnlyPageHandler(std::function<void()> handler) { m_deleteOnly = std::move(handler); }

public slots:
    void SltAddNewPage();
    void SltDeleteCurrentPage();
    void SltJumpFirshPage();
    void SltPrevPage();
    void SltJumpPage(); // to the page typed in the page edit
    void SltNextPage();
    void SltJumpLastPage();

signals:
    void signalChangePage(int index);
    void deletePage(int curr, int maxPage); // values after the deletion
    void addPage(int maxPage);

private:
    QPushButton *addButton(const QString &objectName, const QString &text, void (QtPageBar::*slot)());
    void showCurrentPage();
    void showCount();

    int m_current = 1;
    int m_count = 5;
    std::function<bool(int page)> m_mayDelete;
    std::function<void()> m_deleteOnly;
    QLineEdit *m_pageEdit = nullptr;
    QLabel *m_countLabel = nullptr;
};
