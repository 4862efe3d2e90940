#include "curvetable.h"

#include "csvtext.h"

#include <QDateTime>
#include <QLocale>
#include <limits>
#include <utility>

CurveTable::CurveTable(const QStringList &names, const QVector<CurvePoints> &curves)
    : m_curves(curves)
    , m_next(curves.size(), 0)
    , m_piece("\xEF\xBB\xBF" + QStringLiteral("时间").toUtf8())
{
    for (const QString &name : names)
        m_piece += ',' + CsvText::field(name);
    m_piece += "\r\n";
}

bool CurveTable::advance(int maxRows)
{
    for (int row = 0; row < maxRows; ++row) {
        const CurvePoints::Point *first = nullptr;
        for (int curve = 0; curve < m_curves.size(); ++curve) {
            if (m_next.at(curve) == m_curves.at(curve).size())
                continue;
            const CurvePoints::Point &point = m_curves.at(curve).at(m_next.at(curve));
            if (!first || point.line < first->line)
                first = &point;
        }
        if (!first)
            return true;
        appendTime(first->ms);
        const qint64 line = first->line;
        for (int curve = 0; curve < m_curves.size(); ++curve) {
            m_piece += ',';
            int &next = m_next[curve];
            if (next == m_curves.at(curve).size() || m_curves.at(curve).at(next).line != line)
                continue;
            m_piece +=
                QByteArray::number(m_curves.at(curve).at(next++).value, 'g', QLocale::FloatingPointShortest);
        }
        m_piece += "\r\n";
    }
    return false;
}

// The local time, its text kept for one second.
void CurveTable::appendTime(qint64 ms)
{
    const qint64 second = ms / 1000;
    if (m_second != second) {
        m_second = second;
        m_secondText = QDateTime::fromMSecsSinceEpoch(second * 1000)
                           .toString(QStringLiteral("yyyy-MM-dd HH:mm:ss."))
                           .toLatin1();
    }
    const int rest = int(ms % 1000);
    m_piece += m_secondText;
    m_piece += char('0' + rest / 100);
    m_piece += char('0' + rest / 10 % 10);
    m_piece += char('0' + rest % 10);
}

QByteArray CurveTable::takePiece()
{
    return std::exchange(m_piece, QByteArray());
}
