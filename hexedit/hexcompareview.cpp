#include "hexcompareview.h"

#include "fonts.h"
#include "skin.h"

#include <QApplication>
#include <QEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>

#include <algorithm>
#include <limits>

namespace {

constexpr int kRowMargin = 4;
constexpr int kGap = 12; // between the sides
constexpr int kAddressDigits = 8;

QColor mixed(const QColor &over, double share)
{
    const QColor ground(Skin::palette().panel);
    return QColor::fromRgbF(over.redF() * share + ground.redF() * (1 - share),
                            over.greenF() * share + ground.greenF() * (1 - share),
                            over.blueF() * share + ground.blueF() * (1 - share));
}

QColor colorOf(bool isOnlyHere)
{
    return isOnlyHere ? mixed(QColor(0x2f, 0xa0, 0x4f), 0.45) : mixed(QColor(0xe0, 0x50, 0x30), 0.45);
}

QString hexOf(qint64 number, int digits)
{
    return QStringLiteral("%1").arg(number, digits, 16, QLatin1Char('0')).toUpper();
}

} // namespace

HexCompareView::HexCompareView(QWidget *parent)
    : QAbstractScrollArea(parent)
{
    setObjectName(QStringLiteral("hexCompareView"));
    setAccessibleName(QStringLiteral("比较"));
    setFont(Fonts::monospace());
    setFocusPolicy(Qt::StrongFocus);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    connect(verticalScrollBar(), &QScrollBar::valueChanged, viewport(), QOverload<>::of(&QWidget::update));
}

void HexCompareView::show(const HexDocument *left, const HexBytes *right, const HexCompare *compare)
{
    m_left = left;
    m_right = right;
    m_compare = compare;
    updateLayout();
}

void HexCompareView::setPlaceholderText(const QString &text)
{
    m_placeholder = text;
    viewport()->update();
}

void HexCompareView::showPlace(qint64 place)
{
    m_marked = place;
    const int row = static_cast<int>(place / m_bytes);
    const int rows = viewport()->height() / rowHeight();
    if (row < verticalScrollBar()->value() || row >= verticalScrollBar()->value() + rows - 1)
        verticalScrollBar()->setValue(row - rows / 3);
    viewport()->update();
}

int HexCompareView::rowHeight() const
{
    return fontMetrics().height() + kRowMargin;
}

int HexCompareView::sideWidth(int bytes) const
{
    return fontMetrics().horizontalAdvance(QLatin1Char('0')) * (kAddressDigits + 2 + 3 * bytes);
}

void HexCompareView::updateLayout()
{
    m_bytes = 4;
    while (m_bytes < 32 && 2 * sideWidth(2 * m_bytes) + kGap <= viewport()->width())
        m_bytes *= 2;
    const qint64 rows = m_compare ? (m_compare->rows() + m_bytes - 1) / m_bytes : 0;
    const int page = std::max(1, viewport()->height() / rowHeight());
    verticalScrollBar()->setPageStep(page);
    verticalScrollBar()->setRange(0, static_cast<int>(std::min<qint64>(std::max<qint64>(0, rows - page),
                                                                       std::numeric_limits<int>::max())));
    viewport()->update();
}

// The last difference that begins at the place or before it decides.
HexCompareView::Cell HexCompareView::cellAt(qint64 place) const
{
    const auto &differences = m_compare->differences();
    const auto next = std::upper_bound(
        differences.begin(), differences.end(), place,
        [](qint64 wanted, const HexCompare::Difference &difference) { return wanted < difference.row; });
    if (next == differences.begin())
        return {place, place, false};
    const HexCompare::Difference &difference = *std::prev(next);
    const qint64 offset = place - difference.row;
    if (offset >= difference.length()) {
        const qint64 behind = offset - difference.length();
        return {difference.left + difference.leftLength + behind,
                difference.right + difference.rightLength + behind, false};
    }
    return {offset < difference.leftLength ? difference.left + offset : -1,
            offset < difference.rightLength ? difference.right + offset : -1, true};
}

void HexCompareView::paintEvent(QPaintEvent *)
{
    QPainter painter(viewport());
    painter.fillRect(viewport()->rect(), QColor(Skin::palette().panel));
    if (!m_compare) {
        painter.setPen(QColor(Skin::palette().secondaryText));
        painter.setFont(QApplication::font());
        painter.drawText(viewport()->rect().adjusted(16, 8, -16, -8), Qt::AlignCenter | Qt::TextWordWrap,
                         m_placeholder);
        return;
    }
    const qint64 end = m_compare->rows();
    qint64 place = qint64(verticalScrollBar()->value()) * m_bytes;
    for (int y = 0; y < viewport()->height() && place < end; y += rowHeight(), place += m_bytes)
        paintRow(painter, y, place);
}

void HexCompareView::paintRow(QPainter &painter, int y, qint64 place)
{
    QVector<Cell> cells;
    for (qint64 at = place; at < std::min(place + m_bytes, m_compare->rows()); ++at)
        cells.append(cellAt(at));
    const QRect area(kRowMargin, y, sideWidth(m_bytes), rowHeight());
    if (m_marked >= place && m_marked < place + m_bytes)
        painter.fillRect(QRect(0, y, viewport()->width(), rowHeight()),
                         mixed(QColor(Skin::palette().accent), 0.2));
    paintSide(painter, area, cells, true);
    paintSide(painter, area.translated(area.width() + kGap, 0), cells, false);
}

void HexCompareView::paintSide(QPainter &painter, const QRect &area, const QVector<Cell> &cells, bool isLeft)
{
    const int character = fontMetrics().horizontalAdvance(QLatin1Char('0'));
    const auto addressOf = [isLeft](const Cell &cell) { return isLeft ? cell.left : cell.right; };
    const auto first = std::find_if(cells.begin(), cells.end(),
                                    [&addressOf](const Cell &cell) { return addressOf(cell) >= 0; });
    if (first != cells.end()) {
        painter.setPen(QColor(Skin::palette().secondaryText));
        painter.drawText(area, Qt::AlignLeft | Qt::AlignVCenter,
                         hexOf(m_addresses->addressOf(addressOf(*first)), kAddressDigits));
    }
    painter.setPen(QColor(Skin::palette().text));
    for (int i = 0; i < cells.size(); ++i) {
        const qint64 address = addressOf(cells.at(i));
        const QRect cell(area.left() + character * (kAddressDigits + 2 + 3 * i), area.top(), 2 * character,
                         area.height());
        const QByteArray byte = address < 0 ? QByteArray()
                                : isLeft    ? m_left->read(address, 1)
                                            : m_right->read(address, 1);
        if (byte.isEmpty() || (!isLeft && m_right->isAbsent(address))) // or gone since
            continue;
        if (cells.at(i).differs)
            painter.fillRect(cell.adjusted(-character / 2, 1, character / 2, -1),
                             colorOf(cells.at(i).left < 0 || cells.at(i).right < 0 ||
                                     m_right->isAbsent(cells.at(i).right)));
        painter.drawText(cell, Qt::AlignCenter, hexOf(static_cast<quint8>(byte.at(0)), 2));
    }
}

void HexCompareView::resizeEvent(QResizeEvent *event)
{
    QAbstractScrollArea::resizeEvent(event);
    updateLayout();
}

void HexCompareView::changeEvent(QEvent *event)
{
    QAbstractScrollArea::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        updateLayout();
}

// The nearest byte of the left side, at the place or before it.
void HexCompareView::mousePressEvent(QMouseEvent *event)
{
    if (!m_compare || m_compare->rows() == 0)
        return;
    const int character = fontMetrics().horizontalAdvance(QLatin1Char('0'));
    const int side = sideWidth(m_bytes) + kGap;
    const int x = (event->pos().x() - kRowMargin) % side;
    const int column = std::clamp(x / character / 3 - (kAddressDigits + 2) / 3, 0, m_bytes - 1);
    qint64 place = (verticalScrollBar()->value() + event->pos().y() / rowHeight()) * qint64(m_bytes) + column;
    place = std::min(place, m_compare->rows() - 1);
    m_marked = place;
    viewport()->update();
    for (Cell cell = cellAt(place);; cell = cellAt(--place)) {
        if (cell.left >= 0)
            emit chosen(cell.left);
        if (cell.left >= 0 || place == 0)
            return;
    }
}
