#pragma once

// Finds and replaces bytes, given as hexadecimal or as text in either codec.

#include "formpanel.h"
#include "hexsearch.h"

#include <optional>

class QComboBox;
class QHexEdit;
class QLineEdit;

class HexFindPanel : public FormGroup
{
    Q_OBJECT

public:
    explicit HexFindPanel(QHexEdit *edit, QWidget *parent = nullptr);

public slots:
    void begin(); // typing what to look for
    void findNext();
    void findPrevious();
    void replace(); // what is selected, if it is what is looked for, and find the next one
    void replaceAll();

protected:
    void keyPressEvent(QKeyEvent *event) override; // Esc leads back to the bytes

private:
    std::optional<QByteArray> bytesOf(QLineEdit *field) const;
    std::optional<QByteArray> pattern() const;
    bool mayReplace(const std::optional<QByteArray> &old, const std::optional<QByteArray> &with);
    void find(HexSearch::Direction direction);

    QHexEdit *m_edit;
    QComboBox *m_kind;
    QLineEdit *m_find;
    QLineEdit *m_replace;
};
