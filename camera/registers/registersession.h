#pragma once

// Reads and writes the registers of a board: one at a time, or a table, at a pace that
// a small board keeps up with. Owns the two tables, the pending requests and their
// timeouts, and matches replies to requests. On demand, reads back what was written,
// tries again, and compares a table with the board. Sends nothing itself: emits each
// request, and is given the replies and a clock.

#include "registerreport.h"

#include <QTimer>

#include <array>
#include <functional>
#include <optional>

class RegisterSession : public QObject
{
    Q_OBJECT

public:
    enum Access { Read, Write };
    Q_ENUM(Access)
    enum Task { Transfer, Compare }; // Compare reads, and changes no cell
    enum StopReason { NotStopped, ByUser, NoLink, TargetChanged, AtError };

    // Where requests go, and the bytes that they have for an address and a value.
    struct Target
    {
        int device = 0;
        int addressLength = 2;
        int valueLength = 1;
        int group = 0; // that read requests name
    };
    // How a table is worked through. An error is a row without its value: no answer, an
    // answer that says so, another value read back, or a row that can't be sent.
    struct Batch
    {
        int retries = 0; // of a row with an error; a write that isn't read back has none
        int delayMs = 0; // behind each row, in addition to the board's pause
        bool stopsAtError = false;
    };
    // What a board says about a read request. It repeats only the low 16 bits of the
    // address.
    struct Reply
    {
        int device = 0;
        quint16 address = 0;
        bool isGood = true;
        QString value;  // hexadecimal
        QString sender; // the peer that it came from

        bool isValue(quint32 number) const;
    };
    struct Request
    {
        quint32 address = 0;
        std::optional<quint32> value; // none: read
    };
    // Of the table that was started last.
    struct Progress
    {
        int done = 0;
        int total = 0;
        int unanswered = 0;
        int refused = 0;
        int notSent = 0;   // rows that don't fit the target's lengths
        int differing = 0; // rows that read back another value, or whose value the board hasn't
        bool isReadBack = false;
        Task task = Transfer;
        StopReason stopReason = NotStopped;
    };

    explicit RegisterSession(QObject *parent = nullptr);

    RegisterTableModel *table(Access access) { return &m_tables.at(access); }
    // Another one stops a table: half of its rows would go elsewhere, or be cut.
    void setTarget(const Target &target);
    void setBatch(const Batch &batch) { m_batch = batch; }                      // while no table runs
    void setClock(const std::function<QDateTime()> &clock) { m_clock = clock; } // for the report
    // Reads each register back after it was written; for a table, from its next start.
    void setReadsBack(bool readsBack) { m_readsBack = readsBack; }

    // Whether the number fits into that many bytes; true where the length is not 1
    // to 4, which is an error of its own.
    static bool fits(quint32 number, int length);

    // One register. read() returns false when the request could not be sent.
    bool read(quint32 address);
    void write(quint32 address, quint32 value);

    // Reads or writes the registers of a table, or compares them: of the given rows, or
    // of all. Rows without an address are left out. False while a table is being read or
    // written.
    bool start(Access access, Task task = Transfer, const std::optional<QVector<int>> &rows = std::nullopt);
    void stop(Access access);
    bool isRunning() const { return m_timer.isActive(); }
    Access access() const { return m_access; } // of the table started last
    const Progress &progress() const { return m_progress; }
    const RegisterReport &report() const { return m_report; } // of the table started last

    static QString stopText(StopReason reason); // for the user

    // Nothing can be sent any more, or a request could not be: all pending requests
    // are dropped.
    void stopAll();

    // Replies of other devices than the asked one are ignored, and false is returned.
    // One to no pending request goes to the read table's first row of that address
    // without an answer.
    bool addReply(const Reply &reply);

public slots:
    // The timers call these; a test does instead of waiting.
    void advanceSingle(); // reports that there is no reply, which still counts when late
    void advance();       // the table, to its next request

signals:
    void requested(const RegisterSession::Request &request);
    void valueRead(const QString &value, const QString &sender); // answers read()
    void readBack(quint32 address, quint32 written, const RegisterSession::Reply &reply);
    void unanswered(quint32 address);
    void progressed(RegisterSession::Access access); // by a late reply also after finished()
    void finished(RegisterSession::Access access);

private:
    struct TableRequest
    {
        int row = 0;
        Request request;
        int line = 0; // of the report
    };
    struct SingleRead
    {
        int device = 0;
        quint32 address = 0;
        std::optional<quint32> written; // that is read back
        bool isSent = true;
    };

    void beginReport();
    void queueRow(int row);
    void sendNext();
    void sendReadBack();
    bool isAwaited(const Reply &reply) const;
    bool isOfAsked(const Reply &reply) const;
    void endRequest(RegisterTableModel::Outcome outcome, const Reply &reply);
    void endRow(RegisterTableModel::Outcome outcome, const Reply &reply);
    void endSingle(const Reply &reply);
    void stopTable(StopReason reason); // if one runs
    void endTable(StopReason reason);
    int lateDevice() const;
    void addLateReply(const Reply &reply);
    void endLateRow(int row, const Reply &reply);
    RegisterTableModel::Outcome compared(int row, const Reply &reply) const;
    void report(int line, RegisterTableModel::Outcome outcome, const Reply &reply);
    const TableRequest &current() const { return m_queue.at(m_progress.done - 1); }
    bool isReading() const { return m_access == Read || m_progress.task == Compare; }
    QDateTime now() const { return m_clock ? m_clock() : QDateTime(); }

    std::array<RegisterTableModel, 2> m_tables;
    Target m_target;

    std::optional<SingleRead> m_single;
    QTimer m_singleTimer;

    Access m_access = Read; // of the table started last
    QVector<TableRequest> m_queue;
    Progress m_progress;
    Batch m_batch;
    RegisterReport m_report;
    std::function<QDateTime()> m_clock;
    int m_tries = 0;                 // of the last sent request of the queue
    bool m_isRetryDue = false;       // of that request
    std::optional<int> m_stopBefore; // the request of the queue before which a row can't be sent
    bool m_readsBack = false;
    bool m_isAwaiting = false;       // a reply to the last sent request of the queue
    bool m_isReadBackDue = false;    // of the last sent request of the queue
    int m_askedDevice = 0;           // which that request went to
    std::optional<int> m_readDevice; // which the read table was last read from
    QTimer m_timer;                  // runs while a table does
};
