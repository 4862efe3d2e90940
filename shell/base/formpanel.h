#pragma once

// The configuration panel that every tool has on its left: a scrolling column
// of groups, each a grid of labels and fields with one row pitch.

#include <QGroupBox>
#include <QScrollArea>

class QComboBox;
class QGridLayout;
class QHBoxLayout;
class QLabel;
class QVBoxLayout;

// One group: label and field in columns, or widgets over both.
class FormGroup : public QGroupBox
{
    Q_OBJECT

public:
    explicit FormGroup(const QString &title, QWidget *parent = nullptr);

    // The label is the field's buddy; the field takes the rest of the row. A hint
    // in a line of text is kept faint, and a field without an accessible name
    // gets the label's.
    QLabel *addRow(const QString &label, QWidget *field);
    // Two short fields; those of several rows stand in columns.
    void addRow(const QString &label, QWidget *field, const QString &secondLabel, QWidget *secondField);
    // Over all columns.
    void addWide(QWidget *widget);
    // Side by side, equally wide.
    void addPair(QWidget *left, QWidget *right);
    // A click on the title folds and unfolds the group, which is checked while it is
    // unfolded. Folded at first; called when all rows are there.
    void setFoldable();
    // A row outside the columns, for what has different widths.
    QHBoxLayout *addLine();
    QLabel *addTo(QHBoxLayout *line, const QString &label, QWidget *field);

    // The panel decides how wide the box is, not its longest entry.
    static void letShrink(QComboBox *box);

private:
    QLabel *labelFor(const QString &label, QWidget *field);
    void showRows(bool isUnfolded);

    QGridLayout *m_grid;
};

class FormPanel : public QScrollArea
{
    Q_OBJECT

public:
    // Wider only by the scroll bar while it shows, or where a font needs it.
    static constexpr int panelWidth = 270;

    explicit FormPanel(QWidget *parent = nullptr);
    ~FormPanel() override;

    FormGroup *addGroup(const QString &title);
    void addWidget(QWidget *widget);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void fitWidth();
    void showFocus(QWidget *before, QWidget *now);

    QVBoxLayout *m_column;
};
