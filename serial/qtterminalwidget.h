#pragma once

// The receive display: shows received bytes as hexadecimal or as decoded text,
// with optional headers, and hands the text out again.
//
// Bytes come in through one of two ways. showReceived() appends what came to
// what is shown; it only queues, and the event loop draws at most a screen
// refresh's worth at a time, so that a flood cannot freeze the window.
// insertRecvData() is the log view: decoded text of the last 20480 bytes.
//
// What is held is bounded; the oldest paragraphs go to a file on disk, and
// writeTextTo() hands out both.

#include "serial/bytespool.h"
#include "serial/receivebuffer.h"
#include "serial/receivequeue.h"

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

    // Hands out everything shown since the last clearing, what the display no
    // longer holds included, one piece after the other; what waits in the queue
    // isn't shown yet. What is shown while it is at work may or may not be part
    // of it, but nothing is handed out twice. The log view replaces nothing
    // before the reading is over.
    class Reader
    {
    public:
        explicit Reader(QtTerminalWidget &terminal);
        ~Reader();
        Q_DISABLE_COPY_MOVE(Reader)

        QString next();                          // empty at the end
        bool failed() const { return m_failed; } // the file could not be read back

    private:
        QString nextFromHistory();

        QtTerminalWidget &m_terminal;
        qint64 m_offset = 0;
        QByteArray m_partial; // the first bytes of a character that a piece cut
        int m_block = 0;
        bool m_failed = false;
    };

    bool isEmpty() const;
    // Bytes that wait to be shown.
    qint64 queuedBytes() const;

    // Where insertTerminalText() goes: to the end as it stands (the default), or
    // line by line as a terminal shows it.
    void setDirectInsert(bool direct) { m_directInsert = direct; }

    // Most characters and paragraphs held; older ones go to disk.
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
    // The text that went to disk could not be written and is lost.
    void historyLost();

protected:
    QMimeData *createMimeDataFromSelection() const override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    bool atEnd() const; // and nothing that the mouse marks keeps it from going on
    void followEnd(bool wasAtEnd);
    void appendText(const QString &text);
    void applyEdit(const ReceiveBuffer::Edit &edit);
    void replaceText(const QString &text);
    void trimFront();
    void flushAll();
    void flushSoon();
    void dropQueue();
    void showBuffer();
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
    ReceiveBuffer m_receiveBuffer;
    bool m_bufferShown = false; // the document holds the buffer's text and nothing else
    bool m_bufferWaits = false; // it is to, as soon as no reader is at work

    ByteSpool m_history; // UTF-8 of the paragraphs that the display dropped
    int m_mostCharacters;
    int m_mostParagraphs;
    int m_readers = 0; // while something reads, no paragraph moves to disk
};
