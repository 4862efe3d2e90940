#pragma once

// Two documents side by side, a row of the one beside a row of the other, with what
// differs in color. Draws only the rows on display; owns neither the documents nor the
// differences.

#include "hexaddressmap.h"
#include "hexcompare.h"

#include <QAbstractScrollArea>

class HexCompareView : public QAbstractScrollArea
{
    Q_OBJECT

public:
    explicit HexCompareView(QWidget *parent = nullptr);

    // The documents and the comparison outlive this, or show() is called again. Null: nothing.
    void show(const HexDocument *left, const HexBytes *right, const HexCompare *compare);
    // Of the left side; the right one's are the same. Outlives this.
    void setAddresses(const HexAddressMap *addresses) { m_addresses = addresses; }
    void setPlaceholderText(const QString &text);
    // Scrolls to the bytes at a place of HexCompare::rows().
    void showPlace(qint64 place);

signals:
    void chosen(qint64 leftAddress); // by a click

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;

private:
    struct Cell
    {
        qint64 left = -1; // address; -1: this side has no byte there
        qint64 right = -1;
        bool differs = false;
    };

    Cell cellAt(qint64 place) const;
    void paintRow(QPainter &painter, int y, qint64 place);
    void paintSide(QPainter &painter, const QRect &area, const QVector<Cell> &cells, bool isLeft);
    void updateLayout();
    int rowHeight() const;
    int sideWidth(int bytes) const;

    const HexDocument *m_left = nullptr;
    const HexBytes *m_right = nullptr;
    const HexCompare *m_compare = nullptr;
    const HexAddressMap *m_addresses = nullptr;
    QString m_placeholder;
    int m_bytes = 8; // of a row on each side
    qint64 m_marked = -1;
};
