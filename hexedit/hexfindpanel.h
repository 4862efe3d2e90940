#pragma once

// Finds and replaces bytes, given as hexadecimal or as text in either codec.

#include "formpanel.h"
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

    void buildButtons();
    HexCommand *add(const QString &text, const QList<QKeySequence> &keys, void (HexFindPanel::*slot)());
    void update();
    void begin();
    void findNext();
    void findPrevious();
    void replace(); // the selection, if it matches, and find the next match
    void replaceAll();
    void showFound(const HexSearch &search, HexSearch::State state, HexSearch::Direction direction,
                   int length);
    void endReplacing(const Replacing &job, bool done);
    std::optional<QByteArray> bytesOf(QLineEdit *field) const;
    std::optional<QByteArray> pattern() const;
    bool mayReplace(const std::optional<QByteArray> &old, const std::optional<QByteArray> &with);
    void find(HexSearch::Direction direction);

    QHexEdit *m_edit;
    QComboBox *m_kind;
    QLineEdit *m_find;
    QLineEdit *m_replace;
    HexCommand *m_begin;
    HexCommand *m_next;
    HexCommand *m_previous;
    HexCommand *m_replaceOne;
    HexCommand *m_replaceAll;
};
