#pragma once

// The receive display: the view of ReceivedText. Asks it for the next slice when
// there is time for one, at most a screen refresh's worth at a time, so that a
// flood can't freeze the window; keeps the user's selection and place, and
// follows the end where that is in view.

#include "receivedtext.h"

#include <QElapsedTimer>
#include <QTextBrowser>
#include <QTimer>

class TerminalDocument;

class QtTerminalWidget : public QTextBrowser
{
    Q_OBJECT

public:
    explicit QtTerminalWidget(QWidget *parent = nullptr);
    ~QtTerminalWidget() override;

    // Queues received bytes for display behind a header (which may be empty).
    void showReceived(const QByteArray &bytes, const QString &header, bool hexShow);

    // Queues a message among those of several sources, see ReceiveQueue.
    void showMessage(const QByteArray &bytes, const QString &header, bool hexShow, const QString &source);
    void endSource(const QString &source);

    // The text held, after everything pending was shown.
    QString toPlainText();

    // What was shown and what is pending, also where the display has dropped it.
    const ReceivedText &received() const { return m_received; }
    qint64 queuedBytes() const { return m_received.pendingBytes(); }

    // How insertTerminalText() appends: as it stands (the default), or line by
    // line as a terminal shows it.
    void setDirectInsert(bool direct) { m_directInsert = direct; }

    // How many characters and paragraphs the display holds at most.
    void setLimits(int characters, int paragraphs);

public slots:
    void setTerminalText(QString strText);
    void insertTerminalText(QString strText);
    void clearTerminal();
    void insertRecvData(QByteArray byData, bool hexShow, bool showLog);
    void selectColorBrush(const QBrush &brush);
    void selectColorText(const QColor &color);

    // Shows the next slice of what is pending.
    void flushSlice();

signals:
    void clearRequested(); // by the context menu
    // The disk refuses: what is shown from now on is not in the record.
    void recordFailed();

protected:
    QMimeData *createMimeDataFromSelection() const override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    // The text on top of the view, to which it returns when rows have changed.
    struct Place
    {
        bool isAtEnd;
        int position;
        int offset; // pixels of its row above the view
    };

    Place place() const;
    void returnTo(const Place &place);
    bool followsEnd() const;
    void scrollToEnd();
    // Scrolls up by the rows that left at the front since there were so many.
    void keepPlace(int offset, int rowsBefore);
    void apply(const ReceivedText::Change &change);
    void editEnds(const ReceiveBuffer::Edit &edit);
    void showNow(const ReceivedText::Change &change);
    void finishShowing(bool follows);
    void flushAll();
    void flushSoon();

    ReceivedText m_received;
    TerminalDocument *m_document;
    bool m_recordIsComplete = true; // as reported
    bool m_directInsert = true;

    QTimer m_flushTimer;
    QElapsedTimer m_lastFlush;
    int m_flushInterval = 0;  // milliseconds from one flush to the next
    bool m_selecting = false; // the mouse's button is down in the text
    bool m_pressedAtEnd = false;
    bool m_selected = false; // by the mouse, and not scrolled to the end since
};
