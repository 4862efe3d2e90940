#pragma once

// Computes a checksum of the user's choice over a range, compares it with a pasted value,
// writes it into the bytes, and keeps it as a rule of the file: rules are checked when the
// file has been opened, and renewed before it is saved where the user wants it.

#include "fieldmemory.h"
#include "hexrule.h"
#include "notice.h"

#include <QVector>
#include <QWidget>

#include <functional>

class HexCommand;
class HexNotesKeeper;
class QComboBox;
class QHexEdit;
class QLabel;
class QLineEdit;
class QTableWidget;
class QTableWidgetItem;

class HexRulesPanel : public QWidget
{
    Q_OBJECT

public:
    HexRulesPanel(QHexEdit *edit, HexNotesKeeper *keeper, QWidget *parent = nullptr);

    // Computes all rules and shows which of them hold.
    void check();
    // Writes the values of the rules that want it, then calls next(true); false where the
    // user stopped it.
    void renew(const std::function<void(bool)> &next);

signals:
    void notify(const Notice &notice);
    void checked(int wrong);

private:
    // A rule on its way.
    struct Run
    {
        int row = -1;
        HexRule rule;
        HexRule::Places places; // no bytes: impossible
        QByteArray value;       // most significant byte first
    };
    enum class Purpose { Check, Renew };

    void buildUi();
    QLineEdit *addField(class QHBoxLayout *row, const QString &label, const char *name, const QString &text);
    HexRule typedRule() const;
    void compute();
    void showValue();
    void takeSelection();
    void writeValue();
    void keepRule();
    void removeRule();
    void store(QTableWidgetItem *item);
    void showKind();
    void showNotes();
    void showState();
    void showOutcome(int rule, const QString &text, bool isWrong);
    static QVector<Run> inOrder(const QVector<Run> &runs);
    void runRules(const QVector<int> &rows, Purpose purpose,
                  const std::function<void(bool, const QVector<Run> &)> &ended);

    QHexEdit *m_edit;
    HexNotesKeeper *m_keeper;
    FieldMemory m_memory;
    QByteArray m_value; // computed last
    bool m_isShowing = false;
    HexCommand *m_compute;
    HexCommand *m_write;
    HexCommand *m_keep;
    HexCommand *m_check;
    HexCommand *m_remove;
    QComboBox *m_kind;
    QComboBox *m_byteOrder;
    QLineEdit *m_crc;
    QLineEdit *m_begin = nullptr;
    QLineEdit *m_end = nullptr;
    QLineEdit *m_at = nullptr;
    QLineEdit *m_result = nullptr;
    QLineEdit *m_compare = nullptr;
    QLabel *m_outcome;
    QTableWidget *m_table;
};
