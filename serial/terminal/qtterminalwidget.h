#pragma once

// The receive display: shows received bytes as hexadecimal or as decoded text,
// with optional headers, and hands the text out again.
//
// All bytes go through one queue, which the event loop shows slice by slice, at
// most a screen refresh's worth at a time, so that a flood cannot freeze the
// window. showReceived() appends to what is shown; insertRecvData() is the log
// view: the decoded text of the newest 20480 bytes.
//
// What the display holds is bounded. Everything that it has shown since the
// last clearing is in a record on disk, which Reader hands out.

#include "bytespool.h"
#include "receivebuffer.h"
#include "receivequeue.h"

#include <QElapsedTimer>
#include <QTextBrowser>
#include <QTimer>

class LogLayout;

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

    // The text held, everything queued included; paragraphs end with "\n".
    QString toPlainText();

    // Hands out everything shown since the last clearing up to the moment at
    // which it was made, in the order in which it was shown, whether the display
    // still holds it or not, one piece after the other. What is pending in the
    // queue isn't shown yet.
    class Reader
    {
    public:
        explicit Reader(const QtTerminalWidget &terminal);

        QString next();                          // empty at the end
        bool failed() const { return m_failed; } // the file could not be read back

    private:
        const ByteSpool &m_record;
        const qint64 m_end;
        qint64 m_offset = 0;
        StreamDecoder m_decoder;
        bool m_failed = false;
    };

    // False: some of what was shown is missing in the record, see recordFailed().
    bool isRecordComplete() const;

    bool isEmpty() const;
    // Bytes that are pending for display.
    qint64 queuedBytes() const;

    // Where insertTerminalText() goes: to the end as it stands (the default), or
    // line by line as a terminal shows it.
    void setDirectInsert(bool direct) { m_directInsert = direct; }

    // How many characters and paragraphs the display holds at most.
    void setBounds(int characters, int paragraphs);

public slots:
    void setTerminalText(QString strText);
    void insertTerminalText(QString strText);
    void clearTerminal();
    void insertRecvData(QByteArray byData, bool hexShow, bool showLog);
    void selectColorBrush(const QBrush &brush);
    void selectColorText(const QColor &colour);

    // Draws the next slice of what is queued.
    void flushSlice();

signals:
    void clearRequested(); // by the context menu
    // The disk takes no more: what is shown from now on can't be handed out.
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
        bool atEnd;
        int position;
        int offset; // pixels of its row above the view
    };

    LogLayout *logLayout() const;
    Place place() const;
    void returnTo(const Place &place);
    bool atEnd() const; // and nothing that the mouse marks keeps it from going on
    void followEnd(bool wasAtEnd);
    void record(const QString &text);
    void appendText(const QString &text);
    void showLogView();
    void applyEdit(const ReceiveBuffer::Edit &edit);
    void replaceText(const QString &text);
    void trimFront();
    void flushAll();
    void flushSoon();
    QString textBetween(int start, int end) const;

    ReceiveQueue m_queue;
    QTimer m_flushTimer;
    QElapsedTimer m_lastFlush;
    int m_flushInterval = 0;  // milliseconds until the next one
    bool m_selecting = false; // the mouse's button is down in the text
    bool m_pressedAtEnd = false;
    bool m_selected = false; // by the mouse, and not scrolled to the end since

    QString m_pendingText;
    bool m_directInsert = true;
    ReceiveBuffer m_receiveBuffer; // the newest bytes shown as text, in the log view or not
    bool m_bufferShown = false;    // the document holds the buffer's text and nothing else

    ByteSpool m_record; // UTF-8 of everything shown
    int m_maxCharacters;
    int m_maxParagraphs;
};
