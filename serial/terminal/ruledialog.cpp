#include "ruledialog.h"

#include "qtfiledialog.h"
#include "ruleform.h"
#include "rulemodel.h"
#include "safefile.h"
#include "settings.h"
#include "sharedrules.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QTableView>
#include <QVBoxLayout>

namespace {

const auto kFilter = QStringLiteral("着色规则(*.json)");

} // namespace

RuleDialog::RuleDialog(QWidget *parent)
    : QtFramelessDialog(QStringLiteral("着色规则"), parent)
    , m_model(new RuleModel(SharedRules::instance().rules(), Settings::instance().recvBackground, this))
    , m_use(new QCheckBox(QStringLiteral("使用着色规则"), this))
    , m_table(new QTableView(this))
    , m_empty(new QLabel(m_table))
    , m_add(button("btnAddRule", QStringLiteral("添加"), &RuleDialog::add))
    , m_remove(button("btnRemoveRule", QStringLiteral("删除"), &RuleDialog::remove))
    , m_up(button("btnRuleUp", QStringLiteral("上移"), &RuleDialog::moveUp))
    , m_down(button("btnRuleDown", QStringLiteral("下移"), &RuleDialog::moveDown))
    , m_form(new RuleForm(this))
    , m_state(new QLabel(this))
{
    setObjectName(QStringLiteral("RuleDialog"));
    buildUi();
    connect(m_form, &RuleForm::changed, this, &RuleDialog::storeCurrent);
    connect(m_table->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            &RuleDialog::showCurrent);
    m_use->setChecked(SharedRules::instance().areUsed() || m_model->rowCount() == 0);
    select(0);
    showCurrent();
}

void RuleDialog::buildUi()
{
    buildTable();
    m_use->setObjectName(QStringLiteral("checkUseRules"));
    m_state->setObjectName(QStringLiteral("labelRuleState"));
    m_state->setTextFormat(Qt::PlainText);
    auto *middle = new QHBoxLayout;
    middle->setSpacing(8);
    middle->addWidget(m_table, 1);
    middle->addLayout(buildSide());
    body()->addWidget(m_use);
    body()->addLayout(middle, 1);
    body()->addWidget(m_form);
    body()->addWidget(m_state);
    body()->addLayout(buildBottom());
    resize(720, 480);
}

void RuleDialog::buildTable()
{
    m_table->setObjectName(QStringLiteral("tableRules"));
    m_table->setAccessibleName(QStringLiteral("着色规则，靠前的优先"));
    m_table->setModel(m_model);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setWordWrap(false);
    m_table->setShowGrid(false);
    m_table->setIconSize({52, 18});
    m_table->setTabKeyNavigation(false);
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setDefaultSectionSize(26);
    QHeaderView *header = m_table->horizontalHeader();
    header->setHighlightSections(false);
    header->setSectionResizeMode(RuleModel::Pattern, QHeaderView::Stretch);
    const int widths[] = {0, 104, 84, 66, 150};
    for (int column = RuleModel::Kind; column < RuleModel::ColumnCount; ++column)
        header->resizeSection(column, widths[column]);
    m_empty->setObjectName(QStringLiteral("emptyStateText"));
    m_empty->setText(QStringLiteral("还没有规则，请点击“添加”或“添加常见日志规则”"));
    m_empty->setAlignment(Qt::AlignCenter);
    m_empty->setAttribute(Qt::WA_TransparentForMouseEvents);
}

QLayout *RuleDialog::buildSide()
{
    m_up->setToolTip(QStringLiteral("靠前的规则优先"));
    m_down->setToolTip(m_up->toolTip());
    auto *column = new QVBoxLayout;
    column->setSpacing(4);
    for (QPushButton *part : {m_add, m_remove, m_up, m_down})
        column->addWidget(part);
    column->addStretch();
    return column;
}

QLayout *RuleDialog::buildBottom()
{
    auto *row = new QHBoxLayout;
    row->setSpacing(8);
    row->addWidget(button("btnCommonRules", QStringLiteral("添加常见日志规则"), &RuleDialog::addCommon));
    row->addWidget(button("btnImportRules", QStringLiteral("导入…"), &RuleDialog::importRules));
    row->addWidget(button("btnExportRules", QStringLiteral("导出…"), &RuleDialog::exportRules));
    row->addStretch();
    auto *ok = new QPushButton(QStringLiteral("确定"), this);
    ok->setObjectName(QStringLiteral("btnOk"));
    ok->setProperty("primary", true);
    ok->setDefault(true);
    connect(ok, &QPushButton::clicked, this, &RuleDialog::accept);
    auto *cancel = new QPushButton(QStringLiteral("取消"), this);
    cancel->setObjectName(QStringLiteral("btnCancel"));
    cancel->setAutoDefault(false);
    connect(cancel, &QPushButton::clicked, this, &RuleDialog::reject);
    row->addWidget(ok);
    row->addWidget(cancel);
    return row;
}

QPushButton *RuleDialog::button(const char *name, const QString &text, void (RuleDialog::*pressed)())
{
    auto *made = new QPushButton(text, this);
    made->setObjectName(QLatin1String(name));
    made->setAutoDefault(false);
    connect(made, &QPushButton::clicked, this, pressed);
    return made;
}

void RuleDialog::setErrorColor(const QColor &color)
{
    m_errorColor = color;
    m_model->setErrorColor(color);
}

void RuleDialog::resizeEvent(QResizeEvent *event)
{
    QtFramelessDialog::resizeEvent(event);
    m_empty->setGeometry(m_table->rect());
}

// ---- the current rule

int RuleDialog::currentRow() const
{
    return m_table->currentIndex().row();
}

void RuleDialog::select(int row)
{
    m_table->setCurrentIndex(m_model->index(qMin(row, m_model->rowCount() - 1), RuleModel::Pattern));
    showCurrent();
}

void RuleDialog::showCurrent()
{
    const int row = currentRow();
    m_empty->setVisible(m_model->rowCount() == 0);
    m_form->setEnabled(row >= 0);
    m_form->setRule(row >= 0 ? m_model->rule(row) : ColorRule());
    showFault();
    m_add->setEnabled(m_model->rowCount() < ColorRuleFile::maxRules);
    m_remove->setEnabled(row >= 0);
    m_up->setEnabled(row > 0);
    m_down->setEnabled(row >= 0 && row + 1 < m_model->rowCount());
}

void RuleDialog::storeCurrent()
{
    ColorRule rule = m_form->rule();
    rule.isOn = m_model->rule(currentRow()).isOn;
    m_model->setRule(currentRow(), rule);
    showFault();
}

void RuleDialog::showFault()
{
    showState(m_model->index(currentRow(), RuleModel::Fault).data().toString(), true);
}

void RuleDialog::add()
{
    m_model->add(ColorRule());
    select(m_model->rowCount() - 1);
    m_form->focusPattern();
}

void RuleDialog::remove()
{
    const int row = currentRow();
    m_model->remove(row);
    select(row);
}

void RuleDialog::moveUp()
{
    moveTo(currentRow() - 1);
}

void RuleDialog::moveDown()
{
    moveTo(currentRow() + 1);
}

void RuleDialog::moveTo(int row)
{
    m_model->move(currentRow(), row);
    m_table->scrollTo(m_table->currentIndex());
    showCurrent();
}

// ---- more rules at a time

void RuleDialog::addMissing(const ColorRules &rules)
{
    const int added = m_model->addMissing(rules);
    const bool isFull = m_model->rowCount() >= ColorRuleFile::maxRules;
    if (added > 0)
        select(m_model->rowCount() - added);
    showState((added > 0 ? QStringLiteral("已添加%1条规则").arg(added)
                         : QStringLiteral("没有添加规则，列表中已有")) +
              (isFull ? QStringLiteral("，最多%1条").arg(ColorRuleFile::maxRules) : QString()));
}

void RuleDialog::addCommon()
{
    addMissing(commonColorRules());
}

void RuleDialog::importRules()
{
    const QString name =
        QtFileDialog::getOpenFileName(this, QStringLiteral("导入着色规则"), QString(), kFilter);
    if (name.isEmpty())
        return;
    QByteArray content;
    QString reason;
    if (SafeFile::read(name, ColorRuleFile::maxBytes, &content, &reason)) {
        if (const std::optional<ColorRules> rules = ColorRuleFile::read(content, &reason))
            return addMissing(*rules);
    }
    showState(QStringLiteral("导入失败：%1").arg(reason), true);
}

void RuleDialog::exportRules()
{
    const QString name =
        QtFileDialog::getSaveFileName(this, QStringLiteral("导出着色规则"), QString(), kFilter);
    if (name.isEmpty())
        return;
    QString reason;
    if (SafeFile::write(name, ColorRuleFile::write(m_model->rules()), &reason))
        showState(QStringLiteral("已导出%1条规则").arg(m_model->rules().size()));
    else
        showState(QStringLiteral("导出失败：%1").arg(reason), true);
}

void RuleDialog::showState(const QString &text, bool isFault)
{
    m_state->setText(text);
    m_state->setProperty("kind", isFault ? QStringLiteral("error") : QStringLiteral("hint"));
    m_state->style()->unpolish(m_state);
    m_state->style()->polish(m_state);
}

// Where the file of the settings cannot be written, the main window says so.
void RuleDialog::accept()
{
    const ColorRules rules = m_model->rules();
    SharedRules::instance().store(rules, m_use->isChecked() && !rules.isEmpty());
    QtFramelessDialog::accept();
}
