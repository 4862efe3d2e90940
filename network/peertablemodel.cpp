#include "peertablemodel.h"

#include "hextext.h"
#include "textcodec.h"

#include <QDateTime>

#include <algorithm>

namespace {

constexpr int kPreviewHexBytes = 20;

QString timeText(qint64 us, const QString &format)
{
    return us > 0 ? QDateTime::fromMSecsSinceEpoch(us / 1000).toString(format) : QString();
}

bool isReadable(const QString &text)
{
    return std::all_of(text.begin(), text.end(), [](QChar character) {
        return character != QChar::ReplacementCharacter &&
               (character.isPrint() || character.isSpace() || character.isSurrogate());
    });
}

} // namespace

PeerTableModel::PeerTableModel(const PeerStatistics *statistics, QObject *parent)
    : QAbstractTableModel(parent)
    , m_statistics(statistics)
    , m_rows(statistics->size())
{
}

void PeerTableModel::refresh(int codec)
{
    if (m_changes == m_statistics->changes() && codec == m_codec)
        return;
    m_changes = m_statistics->changes();
    m_codec = codec;
    if (m_rows > 0)
        emit dataChanged(index(0, 0), index(m_rows - 1, ColumnCount - 1));
    if (m_statistics->size() > m_rows) {
        beginInsertRows({}, m_rows, m_statistics->size() - 1);
        m_rows = m_statistics->size();
        endInsertRows();
    }
}

void PeerTableModel::reset()
{
    beginResetModel();
    m_rows = m_statistics->size();
    endResetModel();
}

int PeerTableModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_rows;
}

int PeerTableModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(ColumnCount);
}

QVariant PeerTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    static const QString captions[] = {QStringLiteral("对端"),         QStringLiteral("开始"),
                                       QStringLiteral("接收（字节）"), QStringLiteral("发送（字节）"),
                                       QStringLiteral("最近收到"),     QStringLiteral("最近的消息")};
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section >= ColumnCount)
        return {};
    return captions[section];
}

QVariant PeerTableModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_statistics->size())
        return {};
    const PeerStatistics::Row &row = m_statistics->at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return text(row, index.column());
    case sortRole:
        return sortKey(row, index.column());
    case Qt::TextAlignmentRole:
        if (index.column() == Received || index.column() == Sent)
            return int(Qt::AlignRight | Qt::AlignVCenter);
        return {};
    case Qt::ToolTipRole:
        if (index.column() == Name)
            return row.peer.text();
        if (index.column() == Since)
            return timeText(row.sinceUs, QStringLiteral("yyyy-MM-dd hh:mm:ss"));
        return text(row, index.column());
    default:
        return {};
    }
}

QString PeerTableModel::text(const PeerStatistics::Row &row, int column) const
{
    const auto shortTime = QStringLiteral("hh:mm:ss");
    switch (column) {
    case Name:
        return row.leftUs == 0
                   ? row.name
                   : QStringLiteral("%1（%2已断开）").arg(row.name, timeText(row.leftUs, shortTime));
    case Since:
        return timeText(row.sinceUs, shortTime);
    case Received:
        return QString::number(row.received);
    case Sent:
        return QString::number(row.sent);
    case LastTime:
        return timeText(row.lastUs, QStringLiteral("hh:mm:ss.zzz"));
    default:
        return preview(row, m_codec);
    }
}

QVariant PeerTableModel::sortKey(const PeerStatistics::Row &row, int column)
{
    switch (column) {
    case Name:
        return row.name;
    case Since:
        return row.sinceUs;
    case Received:
        return row.received;
    case Sent:
        return row.sent;
    case LastTime:
        return row.lastUs;
    default:
        return row.last;
    }
}

QString PeerTableModel::preview(const PeerStatistics::Row &row, int codec)
{
    const bool isCut = row.lastSize > row.last.size();
    QString text = TextCodec::decode(row.last, codec);
    if (isCut) { // within a character, perhaps
        for (int i = 0; i < 3 && text.endsWith(QChar::ReplacementCharacter); ++i)
            text.chop(1);
    }
    if (isReadable(text))
        return text.simplified() + (isCut ? QStringLiteral("…") : QString());
    const bool isHexCut = row.lastSize > kPreviewHexBytes;
    return HexText::render(row.last.left(kPreviewHexBytes)) + (isHexCut ? QStringLiteral("…") : QString());
}
