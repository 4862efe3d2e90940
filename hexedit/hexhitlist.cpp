#include "hexhitlist.h"

#include "fonts.h"
#include "hexparse.h"
#include "qhexedit.h"
#include "textcodec.h"

#include <QAbstractTableModel>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QTableView>
#include <QTextCodec>
#include <QVBoxLayout>

namespace {

constexpr int kShownBytes = 16;
constexpr int kShownText = 200; // bytes
constexpr int kRowHeight = 22;

QString textOf(const QByteArray &bytes, int codec)
{
    QString text;
    if (codec == -2 || codec == -3)
        text = QTextCodec::codecForName(codec == -2 ? "UTF-16LE" : "UTF-16BE")->toUnicode(bytes);
    else
        text = codec < 0 ? QString::fromLatin1(bytes) : TextCodec::decode(bytes, codec);
    for (QChar &character : text)
        if (!character.isPrint())
            character = QLatin1Char('.');
    return text;
}

} // namespace

class HexHitList::Model : public QAbstractTableModel
{
public:
    enum Column { Address, Length, Bytes, Text, Columns };

    explicit Model(const QHexEdit *edit, QObject *parent)
        : QAbstractTableModel(parent)
        , m_edit(edit)
    {
    }

    void setHits(std::vector<HexHit> hits)
    {
        beginResetModel();
        m_hits = std::move(hits);
        endResetModel();
    }
    const std::vector<HexHit> &hits() const { return m_hits; }

    int rowCount(const QModelIndex &parent = {}) const override
    {
        return parent.isValid() ? 0 : static_cast<int>(m_hits.size());
    }
    int columnCount(const QModelIndex & = {}) const override { return Columns; }

    QVariant headerData(int section, Qt::Orientation orientation, int role) const override
    {
        if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
            return {};
        static const QStringList names{QStringLiteral("地址"), QStringLiteral("长度"),
                                       QStringLiteral("十六进制"), QStringLiteral("文本")};
        return names.at(section);
    }

    QVariant data(const QModelIndex &index, int role) const override
    {
        if (role == Qt::FontRole && index.column() != Text)
            return Fonts::monospace();
        if (role != Qt::DisplayRole && role != Qt::ToolTipRole)
            return {};
        const HexHit &hit = m_hits.at(static_cast<size_t>(index.row()));
        switch (index.column()) {
        case Address:
            return QStringLiteral("0x") + QString::number(m_edit->shownAddress(hit.address), 16).toUpper();
        case Length:
            return hit.length;
        case Bytes:
            return HexParse::text(m_edit->document().read(hit.address, qMin(hit.length, kShownBytes))) +
                   (hit.length > kShownBytes ? QStringLiteral(" …") : QString());
        default:
            return textOf(m_edit->document().read(hit.address, qMin(hit.length, kShownText)), hit.codec);
        }
    }

private:
    const QHexEdit *m_edit;
    std::vector<HexHit> m_hits;
};

HexHitList::HexHitList(QHexEdit *edit, const char *name, const QString &accessibleName, QWidget *parent)
    : QWidget(parent)
    , m_edit(edit)
    , m_model(new Model(edit, this))
    , m_table(new QTableView(this))
    , m_summary(new QLabel(this))
    , m_row(new QHBoxLayout)
{
    setObjectName(QLatin1String(name));
    m_table->setObjectName(QLatin1String(name) + QStringLiteral("Table"));
    m_table->setAccessibleName(accessibleName);
    m_table->setModel(m_model);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setWordWrap(false);
    m_table->setTabKeyNavigation(false);
    m_table->verticalHeader()->setVisible(false);
    m_table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_table->verticalHeader()->setDefaultSectionSize(kRowHeight);
    m_table->horizontalHeader()->setHighlightSections(false);
    m_table->horizontalHeader()->setStretchLastSection(true);
    const int widths[] = {130, 60, 380};
    for (int column = 0; column < 3; ++column)
        m_table->setColumnWidth(column, widths[column]);
    m_summary->setObjectName(QLatin1String(name) + QStringLiteral("Summary"));
    m_summary->setProperty("kind", QStringLiteral("hint"));
    m_summary->setTextFormat(Qt::PlainText);
    m_summary->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(2);
    m_row->setSpacing(8);
    m_row->addWidget(m_summary, 1);
    column->addLayout(m_row);
    column->addWidget(m_table, 1);
    connect(m_table->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex &current) { goTo(current.row()); });
    connect(m_table, &QAbstractItemView::clicked, this,
            [this](const QModelIndex &index) { goTo(index.row()); });
    connect(m_table, &QAbstractItemView::activated, this, [this] { m_edit->setFocus(); });
    connect(edit, &QHexEdit::contentChanged, this, &HexHitList::markStale);
    connect(edit, &QHexEdit::addressesChanged, m_table->viewport(), QOverload<>::of(&QWidget::update));
}

void HexHitList::show(std::vector<HexHit> hits, const QString &summary)
{
    m_summaryText = summary;
    m_summary->setText(summary);
    m_model->setHits(std::move(hits));
}

void HexHitList::clear(const QString &summary)
{
    show({}, summary);
}

void HexHitList::setCompact()
{
    m_summary->hide();
    m_table->setColumnHidden(Model::Bytes, true);
    m_table->setColumnHidden(Model::Text, true);
    m_table->setColumnWidth(Model::Address, 110);
}

void HexHitList::addTool(QWidget *tool)
{
    m_row->insertWidget(m_row->count() - 1, tool);
}

void HexHitList::goTo(int row)
{
    if (row < 0 || row >= m_model->rowCount())
        return;
    const HexHit &hit = m_model->hits().at(static_cast<size_t>(row));
    if (hit.address + hit.length <= m_edit->size())
        m_edit->select(hit.address, hit.length);
    emit chosen(row);
}

// The places are those of the bytes as they were.
void HexHitList::markStale()
{
    if (m_model->rowCount() > 0)
        m_summary->setText(m_summaryText + QStringLiteral("（内容已修改，位置可能不符）"));
}
