#pragma once

// A list of places in the bytes, each with its bytes as digits and as text; choosing one
// goes there. Knows not why they are listed.

#include <QString>
#include <QWidget>

#include <vector>

class QHexEdit;
class QHBoxLayout;
class QLabel;
class QTableView;

struct HexHit
{
    qint64 address = 0;
    int length = 0; // bytes
    int codec = -1; // of its text, see TextCodec; -1: ASCII. -2 and -3: UTF-16, little- and big-endian
};

class HexHitList : public QWidget
{
    Q_OBJECT

public:
    // name: of the list, for object names and the screen reader.
    HexHitList(QHexEdit *edit, const char *name, const QString &accessibleName, QWidget *parent = nullptr);

    void show(std::vector<HexHit> hits, const QString &summary);
    void clear(const QString &summary);
    void setCompact();           // addresses and lengths alone
    void addTool(QWidget *tool); // in the row of the summary, before it

signals:
    void chosen(int row);

private:
    class Model;

    void goTo(int row);
    void markStale();

    QHexEdit *m_edit;
    Model *m_model;
    QTableView *m_table;
    QLabel *m_summary;
    QHBoxLayout *m_row;
    QString m_summaryText;
};
