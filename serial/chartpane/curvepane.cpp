#include "curvepane.h"

#include "curveexporter.h"
#include "curvefeed.h"
#include "logcurvelist.h"
#include "logplot.h"
#include "qtfiledialog.h"
#include "qtmessagebox.h"
#include "qtterminalwidget.h"
#include "settings.h"

#include <QComboBox>
#include <QDir>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QStyle>
#include <QToolTip>

namespace {

constexpr int kStatePeriodMs = 100;
constexpr int kListWidth = 190;
constexpr int kListHeight = 80;
constexpr int kManySkipped = 20; // lines

} // namespace

CurvePane::CurvePane(QtTerminalWidget *terminal, QWidget *parent)
    : QWidget(parent)
    , m_terminal(terminal)
    , m_feed(new CurveFeed(terminal->received().lines(), this))
    , m_plot(new LogPlot(m_feed, this))
    , m_list(new LogCurveList(this))
    , m_exporter(new CurveExporter(this))
    , m_form(new QComboBox(this))
    , m_expression(new QLineEdit(this))
    , m_pause(new QPushButton(this))
    , m_menu(new QMenu(this))
    , m_counts(new QLabel(this))
    , m_stateTimer(this)
{
    buildUi();
    m_stateTimer.setSingleShot(true);
    m_stateTimer.setInterval(kStatePeriodMs);
    connect(&m_stateTimer, &QTimer::timeout, this, &CurvePane::showState);
    connect(terminal, &QtTerminalWidget::recordChanged, m_feed, &CurveFeed::follow);
    connect(terminal, &QtTerminalWidget::recordChanged, this, &CurvePane::showStateSoon);
    connect(terminal, &QtTerminalWidget::recordBegunAgain, this, [this] {
        m_plot->returnToLive();
        restart(); // the same values come once more
    });
    connect(m_feed, &CurveFeed::changed, this, &CurvePane::showNew);
    connect(m_feed, &CurveFeed::curvesDropped, this, &CurvePane::dropCurves);
    connect(m_list, &LogCurveList::curveChanged, this, [this](int curve) {
        m_plot->setStyleOf(curve, m_list->color(curve), m_list->isShown(curve), m_list->name(curve));
    });
    connect(m_plot, &LogPlot::followChanged, this, &CurvePane::showFollow);
    connect(m_plot, &LogPlot::drawn, this, &CurvePane::moveReadOut);
    connect(m_plot, &QCustomPlot::mouseMove, this, [this](const QMouseEvent *event) {
        if (event->buttons() == Qt::NoButton)
            showReadOut(event->pos());
    });
    connect(m_exporter, &CurveExporter::finished, this,
            [this](const QString &fileName, const QString &error) {
                m_exportFailed = !error.isEmpty();
                report(QStringLiteral("文件已导出："), fileName, error);
            });
    load();
    restart();
    showFollow();
}

// ---- building

void CurvePane::buildUi()
{
    setObjectName(QStringLiteral("curvePane"));
    m_plot->setAccessibleName(QStringLiteral("数值曲线"));
    m_counts->setObjectName(QStringLiteral("labelCurveCounts"));
    m_counts->setProperty("kind", QStringLiteral("hint"));
    m_counts->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);

    m_content = new QBoxLayout(QBoxLayout::LeftToRight);
    m_content->setSpacing(4);
    m_content->addWidget(m_plot, 1);
    m_content->addWidget(m_list);

    m_column = new QVBoxLayout(this);
    m_column->setContentsMargins(0, 0, 0, 0);
    m_column->setSpacing(4);
    m_column->addLayout(buildBar());
    m_column->addLayout(m_content, 1);
    setPlotStyle(QStringLiteral("black"));
    setNarrow(false);
}

QBoxLayout *CurvePane::buildBar()
{
    m_form->setObjectName(QStringLiteral("comboCurveForm"));
    m_form->setAccessibleName(QStringLiteral("数值行的形式"));
    m_form->setToolTip(QStringLiteral("怎样从一行中取出数值"));
    m_form->addItems({QStringLiteral("自动识别"), QStringLiteral("名称=数值"), QStringLiteral("名称 数值"),
                      QStringLiteral("分隔的列"), QStringLiteral("表达式")});
    m_expression->setObjectName(QStringLiteral("editCurveExpression"));
    m_expression->setAccessibleName(QStringLiteral("表达式"));
    m_expression->setPlaceholderText(QStringLiteral("如 T=(?<温度>\\S+)"));
    m_pause->setObjectName(QStringLiteral("btnCurvePause"));
    auto *fit = new QPushButton(QStringLiteral("适应"), this);
    fit->setObjectName(QStringLiteral("btnCurveFit"));
    fit->setToolTip(QStringLiteral("显示全部数值。滚轮缩放横轴，Ctrl+滚轮缩放纵轴，拖动查看"));
    auto *more = new QPushButton(QStringLiteral("更多"), this);
    more->setObjectName(QStringLiteral("btnCurveMore"));
    buildMenu();
    more->setMenu(m_menu);
    auto *close = new QPushButton(QStringLiteral("关闭"), this);
    close->setObjectName(QStringLiteral("btnCurveClose"));
    close->setToolTip(QStringLiteral("关闭数值曲线"));

    connect(m_form, QOverload<int>::of(&QComboBox::activated), this, &CurvePane::chooseForm);
    connect(m_expression, &QLineEdit::editingFinished, this, &CurvePane::chooseForm);
    connect(m_pause, &QPushButton::clicked, this, [this] {
        if (m_plot->follow() == LogPlot::Held)
            m_plot->returnToLive();
        else
            m_plot->hold();
    });
    connect(fit, &QPushButton::clicked, m_plot, &LogPlot::fit);
    connect(close, &QPushButton::clicked, this, &CurvePane::closeRequested);

    m_bar = new QHBoxLayout;
    m_bar->setSpacing(4);
    m_bar->addWidget(m_form);
    m_bar->addStretch();
    for (QPushButton *button : {m_pause, fit, more, close})
        m_bar->addWidget(button);
    return m_bar;
}

void CurvePane::buildMenu()
{
    m_byLine = m_menu->addAction(QStringLiteral("横轴为行号"));
    m_byLine->setCheckable(true);
    connect(m_byLine, &QAction::toggled, this, [this](bool byLine) {
        Settings::instance().view.curvesByLine.set(byLine);
        m_plot->setAxis(byLine ? LogPlot::Axis::Line : LogPlot::Axis::Time);
    });
    m_menu->addSeparator();
    connect(m_menu->addAction(QStringLiteral("清空曲线")), &QAction::triggered, m_feed, &CurveFeed::clear);
    connect(m_menu->addAction(QStringLiteral("导出CSV…")), &QAction::triggered, this,
            &CurvePane::exportTable);
    connect(m_menu->addAction(QStringLiteral("保存图片…")), &QAction::triggered, this,
            &CurvePane::savePicture);
}

void CurvePane::setPlotStyle(const QString &style)
{
    m_plotStyle = style;
    m_plot->setPlotStyle(style);
}

void CurvePane::setNarrow(bool narrow)
{
    m_content->setDirection(narrow ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
    m_bar->removeWidget(m_counts);
    m_bar->removeWidget(m_expression);
    if (narrow) {
        m_column->insertWidget(1, m_expression);
        m_column->addWidget(m_counts);
    } else {
        m_bar->insertWidget(1, m_expression, 1);
        m_bar->insertWidget(m_bar->indexOf(m_pause), m_counts, 1);
    }
    m_list->setMinimumWidth(narrow ? 0 : kListWidth);
    m_list->setMaximumWidth(narrow ? QWIDGETSIZE_MAX : kListWidth);
    m_list->setMaximumHeight(narrow ? kListHeight : QWIDGETSIZE_MAX);
}

// ---- choices

void CurvePane::load()
{
    const Settings::ViewSettings &view = Settings::instance().view;
    const bool isChanged =
        m_form->currentIndex() != view.curveForm || m_expression->text() != view.curveExpression;
    m_form->setCurrentIndex(view.curveForm);
    m_expression->setText(view.curveExpression);
    m_expression->setVisible(m_form->currentIndex() == int(NumberLines::Form::Expression));
    m_byLine->setChecked(view.curvesByLine);
    if (isChanged)
        restart();
}

void CurvePane::chooseForm()
{
    Settings::ViewSettings &view = Settings::instance().view;
    if (view.curveForm == m_form->currentIndex() && view.curveExpression == m_expression->text())
        return;
    view.curveForm.set(m_form->currentIndex());
    view.curveExpression.set(m_expression->text());
    m_expression->setVisible(m_form->currentIndex() == int(NumberLines::Form::Expression));
    restart();
}

void CurvePane::restart()
{
    m_feed->start(NumberLines::Form(m_form->currentIndex()), m_expression->text());
    const QString fault = m_feed->lines().fault();
    m_expression->setToolTip(
        fault.isEmpty() ? QStringLiteral("每个括号为一条曲线，(?<名称>…)给出名称；按回车生效") : fault);
    m_expression->setProperty("kind", fault.isEmpty() ? "" : "error");
    m_expression->style()->unpolish(m_expression);
    m_expression->style()->polish(m_expression);
    showState();
}

// ---- what was read

void CurvePane::dropCurves()
{
    m_list->clear();
    m_plot->dropCurves();
    showState();
}

void CurvePane::showNew()
{
    m_list->setNames(m_feed->lines().names().mid(0, m_feed->curves().size()));
    m_plot->refresh();
    showStateSoon();
}

// As often as the eye can follow.
void CurvePane::showStateSoon()
{
    if (!m_stateTimer.isActive())
        m_stateTimer.start();
}

void CurvePane::showState()
{
    if (isVisible())
        for (int curve = 0; curve < m_list->count(); ++curve)
            if (!m_feed->curves().at(curve).isEmpty())
                m_list->setValue(curve, m_feed->curves().at(curve).last().value);
    const NumberLines &lines = m_feed->lines();
    QString text = QStringLiteral("已用 %1 行，跳过 %2 行").arg(lines.used()).arg(lines.skipped());
    if (m_feed->passedOver() > 0)
        text += QStringLiteral("，未读较早的 %1 行").arg(m_feed->passedOver());
    if (lines.surplus() > 0)
        text += QStringLiteral("，超出%1条曲线的数值 %2 个").arg(NumberLines::maxCurves).arg(lines.surplus());
    if (m_terminal->showsHex())
        text = QStringLiteral("十六进制显示的内容不生成曲线；") + text;
    m_counts->setText(text);
    m_counts->setToolTip(text);
    showHint();
}

void CurvePane::showHint()
{
    const NumberLines &lines = m_feed->lines();
    if (!lines.fault().isEmpty())
        m_plot->showHint(lines.fault());
    else if (lines.hasGivenUp())
        m_plot->showHint(QStringLiteral("表达式过于复杂，已停止识别"));
    else if (m_terminal->showsHex())
        m_plot->showHint(QStringLiteral("十六进制显示的内容不生成曲线"));
    else if (lines.skipped() > kManySkipped)
        m_plot->showHint(QStringLiteral("没有识别出数值，可选择其他形式"));
    else
        m_plot->showHint(
            QStringLiteral("收到含数值的行后，曲线显示在这里\n如“温度=23.4”“1.5,2.0”“temp 23.4”"));
}

void CurvePane::showFollow()
{
    const bool isHeld = m_plot->follow() == LogPlot::Held;
    m_feed->setPaused(isHeld);
    m_pause->setText(isHeld ? QStringLiteral("继续") : QStringLiteral("暂停"));
    m_pause->setToolTip(isHeld ? QStringLiteral("继续读取新的行（双击曲线）")
                               : QStringLiteral("停住曲线；新的行仍在接收区，继续后读取"));
}

void CurvePane::showReadOut(const QPoint &position)
{
    const double key = m_plot->xAxis->pixelToCoord(position.x());
    const QString text = m_plot->axisRect()->rect().contains(position) ? m_plot->readOut(key) : QString();
    if (text.isEmpty()) {
        m_plot->hideCursor();
        QToolTip::hideText();
        return;
    }
    m_plot->setCursorAt(key);
    QToolTip::showText(m_plot->mapToGlobal(position) + QPoint(12, 12), text, m_plot);
}

// The curves move below a resting mouse.
void CurvePane::moveReadOut()
{
    if (m_plot->underMouse() && QToolTip::isVisible())
        showReadOut(m_plot->mapFromGlobal(QCursor::pos()));
    else
        m_plot->hideCursor(); // without values it would only drift away
}

// ---- files

void CurvePane::exportTable()
{
    if (m_exporter->isRunning()) {
        emit notify(Notice::error(QStringLiteral("上一次导出尚未完成，请稍候！")));
        return;
    }
    if (m_feed->curves().isEmpty()) {
        emit notify(Notice::information(QStringLiteral("当前没有曲线可以导出！")));
        return;
    }
    const QString fileName =
        QtFileDialog::getSaveFileName(this, QStringLiteral("导出数据"), QString(), QStringLiteral("*.csv"));
    if (!fileName.isEmpty())
        m_exporter->start(fileName, m_feed->lines().names().mid(0, m_feed->curves().size()),
                          m_feed->curves());
}

void CurvePane::savePicture()
{
    const QString fileName = QtFileDialog::getSaveFileName(this, QStringLiteral("保存图片"), QString(),
                                                           QStringLiteral("PNG图片(*.png);;PDF文档(*.pdf)"));
    if (fileName.isEmpty())
        return;
    QString error;
    if (!m_plot->savePicture(fileName, &error) && error.isEmpty())
        error = QStringLiteral("未知错误");
    report(QStringLiteral("图片已保存："), fileName, error);
}

void CurvePane::report(const QString &success, const QString &fileName, const QString &error)
{
    const QString place = QDir::toNativeSeparators(fileName);
    if (error.isEmpty()) {
        emit notify(Notice::information(success + place));
        return;
    }
    emit notify(Notice::error(QStringLiteral("%1 保存失败：%2").arg(place, error)));
    QtMessageBox::warning(this, QStringLiteral("告警"), QStringLiteral("文件保存失败!"));
}

bool CurvePane::completeExport()
{
    m_exportFailed = false;
    m_exporter->complete();
    return !m_exportFailed;
}
