#pragma once

// The send box's second page: stored commands in numbered rows, ten to a page.
// Keeps the rows and their file; which row is to be sent goes out as a signal.

#include "serial/sendlist.h"

#include <QWidget>

class QButtonGroup;
class QLineEdit;
class QtPageBar;

class MultiSendPage : public QWidget
{
    Q_OBJECT

public:
    // fileName: where the rows are kept.
    explicit MultiSendPage(const QString &fileName, QWidget *parent = nullptr);
    ~MultiSendPage() override;

    QtPageBar *pageBar() const { return m_pageBar; }

public slots:
    void SltClearMultiEdit();
    void SltMultiChangePage(int page);
    void SltMultiBtnClicked(int place);
    void SltMultiEditFinished();

signals:
    void sendRow(QString text);
    void signalNotify(QString text, int kind);

private:
    void buildUi();
    void load();
    void save();
    void showPage(int page);
    // Takes over what stands in the ten edits, typed to the end or not.
    void storeShownPage();
    void onPageDeleted(int current, int count);

    QString m_fileName;
    SendList m_rows;
    QVector<QLineEdit *> m_edits;
    QButtonGroup *m_buttons;
    QtPageBar *m_pageBar;
    int m_shownPage = 1;
    int m_pageCount = SendList::fewestPages;
    int m_deletedPage = 0; // the last page, while it is being deleted
};
