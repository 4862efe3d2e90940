#pragma once

// The send box's second page: stored commands in numbered rows, ten to a page.
// Owns the rows and their file; the box, whose slots the buttons reach, sends.

#include "notice.h"
#include "sendlist.h"

#include <QWidget>

class QButtonGroup;
class QLineEdit;
class QPushButton;
class QtPageBar;

class MultiSendPage : public QWidget
{
    Q_OBJECT

public:
    // fileName: where the rows are kept.
    explicit MultiSendPage(const QString &fileName, QWidget *parent = nullptr);
    ~MultiSendPage() override;

    QtPageBar *pageBar() const { return m_pageBar; }

    QButtonGroup *sendButtons() const { return m_buttons; } // ids 0 to 9
    QPushButton *clearButton() const { return m_clear; }
    const QVector<QLineEdit *> &edits() const { return m_edits; } // property "id"

    // Asks, then empties the rows of the page shown.
    void clearPage();
    // Follows the page bar; what is being typed is stored first.
    void turnTo(int page);
    void storeRow(int place);
    // The text of a row as it stands in its edit; stored before it is sent.
    QString rowToSend(int place);

    // Stores the ten edits, also one that is being typed, and saves changes. The
    // reason of a failure.
    QString storeShownPage();

signals:
    void notify(const Notice &notice);

private:
    void buildUi();
    void load();
    // Writes the rows changed here over those that the file holds by now. The
    // reason of a failure, which is also posted.
    QString save();
    void mergeFile(const QByteArray &content);
    void showPage(int page);
    bool mayDelete(int page);
    void onPageDeleted(int current);

    QString m_fileName;
    SendList m_rows;
    QVector<QLineEdit *> m_edits;
    QButtonGroup *m_buttons;
    QPushButton *m_clear;
    QtPageBar *m_pageBar;
    int m_shownPage = 1;
    int m_deletedPage = 0; // while one is being deleted
};
