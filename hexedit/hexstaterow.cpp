#include "hexstaterow.h"

#include "qhexedit.h"

#include <QDir>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QStyle>

namespace {

// A long name is cut in its middle; that it is not saved stays visible.
class NameLabel : public QLabel
{
public:
    using QLabel::QLabel;

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        style()->drawItemText(&painter, rect(), Qt::AlignLeft | Qt::AlignVCenter, palette(), isEnabled(),
                              fontMetrics().elidedText(text(), Qt::ElideMiddle, width()), foregroundRole());
    }
};

QString hexadecimal(qint64 address)
{
    return QStringLiteral("0x") + QString::number(address, 16).toUpper();
}

} // namespace

HexStateRow::HexStateRow(QHexEdit *edit, QWidget *parent)
    : QWidget(parent)
    , m_edit(edit)
    , m_file(new NameLabel(this))
    , m_readOnly(new QLabel(QStringLiteral("只读"), this))
    , m_address(new QLabel(this))
    , m_selection(new QLabel(this))
    , m_progress(new QProgressBar(this))
    , m_stop(new QPushButton(QStringLiteral("停止"), this))
    , m_mode(new QPushButton(this))
{
    m_file->setObjectName(QStringLiteral("labelFile"));
    m_file->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_readOnly->setObjectName(QStringLiteral("labelReadOnly"));
    m_readOnly->hide();
    m_address->setObjectName(QStringLiteral("labelHexAddress"));
    m_address->setToolTip(QStringLiteral("当前地址（十六进制）"));
    m_selection->setObjectName(QStringLiteral("labelSelection"));
    m_selection->setTextFormat(Qt::PlainText);
    m_selection->setMinimumWidth(1); // a long text must not widen the window
    m_progress->setObjectName(QStringLiteral("progressHex"));
    m_progress->setRange(0, 1000);
    m_progress->setFixedWidth(200);
    m_stop->setObjectName(QStringLiteral("btnStopWork"));
    m_mode->setObjectName(QStringLiteral("btnMode"));
    m_mode->setFocusPolicy(Qt::TabFocus);
    m_mode->setToolTip(QStringLiteral("在改写和插入之间切换（Insert键）"));
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(8);
    row->addWidget(m_file, 1);
    for (QWidget *widget :
         std::initializer_list<QWidget *>{m_readOnly, m_address, m_selection, m_progress, m_stop, m_mode})
        row->addWidget(widget);
    m_progress->hide();
    m_stop->hide();
    connect(m_mode, &QPushButton::clicked, this, [this] { m_edit->setOverwrite(!m_edit->isOverwrite()); });
    connect(m_edit, &QHexEdit::stateChanged, this, &HexStateRow::showState);
    const SlicedTask *task = m_edit->task();
    connect(m_stop, &QPushButton::clicked, task, &SlicedTask::stop);
    connect(task, &SlicedTask::started, this, &HexStateRow::showWork);
    connect(task, &SlicedTask::progressed, this, &HexStateRow::showProgress);
    connect(task, &SlicedTask::ended, m_progress, &QWidget::hide);
    connect(task, &SlicedTask::ended, m_stop, &QWidget::hide);
    showState();
}

void HexStateRow::showFile(const QString &name, const QString &path, bool isModified)
{
    const QString shown = name.isEmpty() ? QStringLiteral("未打开文件") : name;
    m_file->setText(isModified ? shown + QStringLiteral(" *（未保存）") : shown);
    m_file->setToolTip(QDir::toNativeSeparators(path));
}

void HexStateRow::showReadOnly(const QString &reason)
{
    m_readOnly->setVisible(!reason.isEmpty());
    m_readOnly->setToolTip(reason + QStringLiteral("，修改后请另存为其他文件"));
}

void HexStateRow::showState()
{
    const qint64 selected = m_edit->selectionLength();
    m_selection->setText(selected > 0 ? QStringLiteral("选中：%1起%2字节")
                                            .arg(hexadecimal(m_edit->shownAddress(m_edit->selectionBegin())))
                                            .arg(selected)
                                      : QString());
    m_address->setText(hexadecimal(m_edit->shownAddress(m_edit->address())));
    m_mode->setText(m_edit->isOverwrite() ? QStringLiteral("改写") : QStringLiteral("插入"));
}

void HexStateRow::showWork(const QString &name)
{
    m_progress->setFormat(name + QStringLiteral(" %p%"));
    showProgress(0);
    m_progress->show();
    m_stop->show();
}

void HexStateRow::showProgress(int permille)
{
    m_progress->setValue(permille);
    m_stop->setEnabled(m_edit->task()->isStoppable());
}
