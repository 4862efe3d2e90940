#pragma once

// The receive display: the view of ReceivedText. Asks it for the next slice when
// there is time for one, at most a screen refresh's worth at a time, so that a
// flood can't freeze the window; keeps the user's selection and place, and
// follows the end where that is in view.
//
// Older lines than the display holds are shown when the user scrolls or is led
// there, see LogWindow.

#include "basemarks.h"
#include "logmargin.h"
#include "logwindow.h"
#include "matchmarks.h"
#include "receivedtext.h"
#include "viewoptions.h"

#include <QElapsedTimer>
#include <QTextBrowser>
#include <QTimer>

class NewestButton;
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
    // Queues what was sent, as lines of their own.
    void showSent(const QByteArray &bytes, bool hexShow, bool isLogMode);

    // The text held, after everything pending was shown.
    QString toPlainText();

    // What was shown and what is pending, also where the display has dropped it.
    const ReceivedText &received() const { return m_received; }
    // What came last is shown in hexadecimal.
    bool showsHex() const { return m_showsHex; }
    qint64 queuedBytes() const { return m_received.pendingBytes(); }

    // How insertTerminalText() appends: as it stands (the default), or line by
    // line as a terminal shows it.
    void setDirectInsert(bool direct) { m_directInsert = direct; }

    // How many characters and paragraphs the display holds at most.
    void setLimits(int characters, int paragraphs);

    // What the user has selected; with stamps, each line behind its own.
    QString selectedText(bool withStamps) const;
    // Selects a match and brings it into view. The line may be one that the
    // display has dropped.
    void showMatch(const LineSearch::Match &match);
    // The line on top of the view.
    LineSearch::Place topPlace() const;
    // Where text is to be shown in another way, all of it is made again.
    void setView(const ViewOptions &view);
    const ViewOptions &view() const { return m_view; }
    // What stands in front of a line where stamps are copied or saved.
    LineStamp stamp() const;
    // Makes the text again from what was received, with the codec of now. False:
    // not all of it is there any more.
    bool showAgain();
    // Times since the opening of the link count from now.
    void beginTimes();

    // Shows only the lines of a filter, which outlives this or is taken away with
    // nullptr; the line on top stays. filterGrew(): the filter has more lines;
    // filterChanged(): it has others.
    void setFilter(const LineFilter *filter);
    const LineFilter *filter() const { return m_window.filter(); } // or nullptr
    void filterGrew();
    void filterChanged();

    // Every match of a search, which outlives this, is marked in the text and on
    // the scroll bar. To be called again when another search begins.
    void markMatches(const LineSearch &search);
    void updateMarks() { m_marks->update(); } // the search has gone on

public slots:
    void setTerminalText(QString strText);
    void insertTerminalText(QString strText);
    void clearTerminal();
    void insertRecvData(QByteArray byData, bool hexShow, bool showLog);
    void selectColorBrush(const QBrush &brush);
    void selectColorText(const QColor &color);

    // Shows the next slice of what is pending.
    void flushSlice();
    void goToNewest(); // and follows it
    void goToOldest();

signals:
    void clearRequested();        // by the context menu
    void findRequested();         // so too
    void lineChosen(qint64 line); // by a double click, while filtered
    void recordChanged();         // lines were added, or all were cleared
    void recordBegunAgain();      // its lines come once more, see showAgain()
    // The disk refuses: what is shown from now on is not in the record.
    void recordFailed();
    // The first time that escape sequences are shown as they stand.
    void sequencesSeen();
    // Bytes that are shown as text, and the stream that they are of: empty where
    // they are one by themselves.
    void textReceived(const QByteArray &bytes, const QString &stream);
    void ruleGaveUp(const QString &pattern); // see RuleMarks

protected:
    QMimeData *createMimeDataFromSelection() const override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
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

    void receive(ReceiveQueue::Chunk chunk);
    void clearShown();
    void showMoreRows();
    void append(const QString &text);
    void dropOldest();
    void updateNewestButton();
    void updateMargin();
    qint64 lineAt(const QPointF &point) const; // of the document

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
    LogWindow m_window;
    NewestButton *m_newest;
    LogMargin *m_margin;
    TextMarks m_textMarks;
    BaseMarks m_baseMarks;
    MatchMarks *m_marks;
    ViewOptions m_view;
    bool m_hasSeenSequences = false; // as reported
    bool m_recordIsComplete = true;  // as reported
    bool m_directInsert = true;
    bool m_showsHex = false;

    Place m_placeToKeep{true, 0, 0}; // while rows are counted

    QTimer m_flushTimer;
    QElapsedTimer m_lastFlush;
    int m_flushInterval = 0;  // milliseconds from one flush to the next
    bool m_selecting = false; // the mouse's button is down in the text
    bool m_pressedAtEnd = false;
    bool m_selected = false; // by the mouse, and not scrolled to the end since
};
