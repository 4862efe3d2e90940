#pragma once

// Finds and replaces bytes, given as hexadecimal digits, as text in either codec, as a
// number or as an expression.

#include "fieldmemory.h"
#include "formpanel.h"
#include "hexhitlist.h"
#include "hexsearch.h"

#include <optional>

class HexCommand;
class QComboBox;
class QHexEdit;
class QLineEdit;

class HexFindPanel : public FormGroup
{
    Q_OBJECT

public:
    explicit HexFindPanel(QHexEdit *edit, QWidget *parent = nullptr);

    HexCommand *findCommand() const { return m_begin; } // moves the focus to the pattern
    HexCommand *nextCommand() const { return m_next; }
    HexCommand *previousCommand() const { return m_previous; }
    HexCommand *listCommand() const { return m_listAll; }

    static constexpr size_t maxResults = 250000; // of one list

signals:
    void listed(const std::vector<HexHit> &hits, const QString &summary);

protected:
    void keyPressEvent(QKeyEvent *event) override; // Esc leads back to the bytes

private:
    struct Replacing
    {
        HexSearch search;
        HexDocument::Batch batch;
        QByteArray with;
        qint64 count = 0;
    };
    enum Kind { Hex, TextUtf8, TextGb18030, Number, Expression };

    void buildFields();
    void buildButtons();
    void showKind();
    HexCommand *add(const QString &text, const QList<QKeySequence> &keys, void (HexFindPanel::*slot)());
    void update();
    void begin();
    void findNext();
    void findPrevious();
    void replace(); // the selection, if it matches, and find the next match
    void replaceAll();
    void listAll();
    void showFound(const HexSearch &search, HexSearch::State state, HexSearch::Direction direction);
    void endReplacing(const Replacing &job, HexSearch::State state, bool done);
    std::optional<QByteArray> bytesOf(QLineEdit *field) const;
    std::optional<HexPattern> pattern() const;
    std::optional<HexPattern> readPattern() const;
    bool mayReplace(const std::optional<HexPattern> &old, const std::optional<QByteArray> &with);
    void find(HexSearch::Direction direction);
    bool hasGap(qint64 begin, qint64 length) const;

    QHexEdit *m_edit;
    FieldMemory m_memory;
    QComboBox *m_kind;
    QComboBox *m_number;
    QComboBox *m_byteOrder;
    QLineEdit *m_find;
    QLineEdit *m_replace;
    HexCommand *m_begin;
    HexCommand *m_next;
    HexCommand *m_previous;
    HexCommand *m_replaceOne;
    HexCommand *m_replaceAll;
    HexCommand *m_listAll;
};
