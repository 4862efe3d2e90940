#include "camerahealthpane.h"

#include "camerareceiver.h"
#include "healthtable.h"
#include "qtfiledialog.h"
#include "safefile.h"

#include <QDir>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>
#include <QTableWidget>
#include <QVBoxLayout>

namespace {

constexpr int kRowHeight = 24;
constexpr int kPanelHeight = 168;

QTableWidget *makeTable(const QVector<QStringList> &rows, const char *name, const QString &accessibleName,
                        QWidget *parent)
{
    auto *table = new QTableWidget(0, rows.constFirst().size(), parent);
    table->setObjectName(QLatin1String(name));
    table->setAccessibleName(accessibleName);
    table->setHorizontalHeaderLabels(rows.constFirst());
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setWordWrap(false);
    table->setTabKeyNavigation(false);
    table->verticalHeader()->setDefaultSectionSize(kRowHeight);
    table->verticalHeader()->setVisible(false);
    table->horizontalHeader()->setHighlightSections(false);
    table->resizeColumnsToContents();
    return table;
}

// Columns grow with their texts and do not shrink, so that they do not jump.
void showRows(QTableWidget *table, const QVector<QStringList> &rows)
{
    table->setRowCount(rows.size() - 1);
    for (int row = 1; row < rows.size(); ++row) {
        for (int column = 0; column < rows.at(row).size(); ++column) {
            const QString &text = rows.at(row).at(column);
            if (QTableWidgetItem *const item = table->item(row - 1, column))
                item->setText(text);
            else
                table->setItem(row - 1, column, new QTableWidgetItem(text));
        }
    }
    for (int column = 0; column < table->columnCount(); ++column) {
        const int before = table->columnWidth(column);
        table->resizeColumnToContents(column);
        if (table->columnWidth(column) < before)
            table->setColumnWidth(column, before);
    }
}

} // namespace

CameraHealthPane::CameraHealthPane(CameraReceiver *receiver, QWidget *parent)
    : QWidget(parent)
    , m_receiver(receiver)
    , m_button(new QPushButton(QStringLiteral("状况"), parent))
    , m_offer(buildOffer())
    , m_panel(buildPanel())
{
    m_button->setObjectName(QStringLiteral("btnCameraHealth"));
    m_button->setToolTip(QStringLiteral("链路状况：各发送方的帧数、帧率、间隔和最近的错误"));
    m_button->setCheckable(true);
    connect(m_button, &QPushButton::toggled, this, &CameraHealthPane::openPanel);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);
    column->addWidget(m_offer);
    column->addWidget(m_panel);
    m_offer->hide();
    m_panel->hide();
    hide();
}

QWidget *CameraHealthPane::buildOffer()
{
    auto *offer = new QWidget(this);
    offer->setObjectName(QStringLiteral("resynchronizeOffer"));
    auto *text = new QLabel(QStringLiteral("收到数据但没有图像，可能已失步。"), offer);
    text->setProperty("kind", QStringLiteral("error"));
    auto *use = new QPushButton(QStringLiteral("启用逐字节同步"), offer);
    use->setObjectName(QStringLiteral("btnUseResynchronize"));
    auto *close = new QPushButton(QStringLiteral("忽略"), offer);
    close->setObjectName(QStringLiteral("btnIgnoreResynchronize"));
    auto *row = new QHBoxLayout(offer);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(8);
    row->addWidget(text);
    row->addWidget(use);
    row->addWidget(close);
    row->addStretch();
    const auto hideOffer = [this] {
        m_offer->hide();
        setVisible(m_button->isChecked());
    };
    connect(use, &QPushButton::clicked, this, &CameraHealthPane::resynchronizeWanted);
    connect(use, &QPushButton::clicked, this, hideOffer);
    connect(close, &QPushButton::clicked, this, hideOffer);
    return offer;
}

QWidget *CameraHealthPane::buildPanel()
{
    const CameraHealth none;
    auto *panel = new QTabWidget(this);
    panel->setObjectName(QStringLiteral("cameraHealthPanel"));
    panel->setDocumentMode(true);
    panel->tabBar()->setDrawBase(false);
    panel->setFixedHeight(kPanelHeight);
    m_counts = makeTable(HealthTable::summary(none), "tableCameraHealth", QStringLiteral("链路状况"), panel);
    m_faults =
        makeTable(HealthTable::faults(none, {}), "tableCameraFaults", QStringLiteral("最近的错误"), panel);
    panel->addTab(m_counts, QStringLiteral("统计(帧)"));
    panel->addTab(m_faults, QStringLiteral("最近的错误"));
    auto *save = new QPushButton(QStringLiteral("导出"), panel);
    save->setObjectName(QStringLiteral("btnExportHealth"));
    save->setToolTip(QStringLiteral("统计和最近的错误，保存为CSV文件"));
    connect(save, &QPushButton::clicked, this, &CameraHealthPane::save);
    panel->setCornerWidget(save);
    return panel;
}

void CameraHealthPane::openPanel(bool open)
{
    m_panel->setVisible(open);
    setVisible(open || m_offer->isVisibleTo(this));
    if (open)
        showTables();
}

void CameraHealthPane::showTables()
{
    showRows(m_counts, HealthTable::summary(m_receiver->health()));
    showRows(m_faults, HealthTable::faults(m_receiver->health(), QDateTime::currentDateTime()));
}

void CameraHealthPane::refresh(bool canResynchronize)
{
    if (m_button->isChecked())
        showTables();
    const bool offers = canResynchronize && m_receiver->health().lacksFrames();
    if (!offers && m_offer->isVisibleTo(this)) { // pictures have come, or the link has gone
        m_offer->hide();
        setVisible(m_button->isChecked());
    } else if (offers && !m_hasOffered) {
        m_hasOffered = true;
        m_offer->show();
        show();
    }
}

void CameraHealthPane::save()
{
    const QByteArray content = HealthTable::csv(m_receiver->health(), QDateTime::currentDateTime());
    const QString fileName = QtFileDialog::getSaveFileName(this, QStringLiteral("导出链路状况"), QString(),
                                                           QStringLiteral("CSV文件(*.csv)"));
    if (fileName.isEmpty())
        return;
    const QString place = QDir::toNativeSeparators(fileName);
    QString reason;
    if (SafeFile::write(fileName, content, &reason))
        emit notify(Notice::information(QStringLiteral("文件已导出：") + place));
    else
        emit notify(Notice::error(QStringLiteral("%1 保存失败：%2").arg(place, reason)));
}
