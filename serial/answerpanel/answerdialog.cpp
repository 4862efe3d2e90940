#include "answerdialog.h"

#include "answerform.h"
#include "answermodel.h"
#include "linkanswers.h"
#include "qtfiledialog.h"
#include "safefile.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QTableView>
#include <QVBoxLayout>

namespace {

const auto kFilter = QStringLiteral("自动应答规则(*.json)");
constexpr int kRefreshMs = 300;

} // namespace

AnswerDialog::AnswerDialog(const AnswerRules &rules, LinkAnswers *answers, QWidget *parent)
    : QtFramelessDialog(QStringLiteral("自动应答规则"), parent)
    , m_answers(answers)
    , m_model(new AnswerModel(rules, answers, this))
    , m_table(new QTableView(this))
    , m_empty(new QLabel(m_table))
    , m_add(button("btnAddAnswer", QStringLiteral("添加"), &AnswerDialog::add))
    , m_duplicate(button("btnCopyAnswer", QStringLiteral("复制"), &AnswerDialog::duplicate))
    , m_remove(button("btnRemoveAnswer", QStringLiteral("删除"), &AnswerDialog::remove))
    , m_up(button("btnAnswerUp", QStringLiteral("上移"), &AnswerDialog::moveUp))
    , m_down(button("btnAnswerDown", QStringLiteral("下移"), &AnswerDialog::moveDown))
    , m_form(new AnswerForm(this))
    , m_state(new QLabel(this))
{
    setObjectName(QStringLiteral("AnswerDialog"));
    buildUi();
    connect(m_form, &AnswerForm::changed, this, &AnswerDialog::storeCurrent);
    connect(m_table->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            &AnswerDialog::showCurrent);
    auto *refresh = new QTimer(this);
    refresh->setSingleShot(true);
    refresh->setInterval(kRefreshMs);
    connect(refresh, &QTimer::timeout, m_model, &AnswerModel::showHits);
    connect(answers, &LinkAnswers::changed, refresh, [refresh] {
        if (!refresh->isActive())
            refresh->start();
    });
    select(0);
}

const AnswerRules &AnswerDialog::rules() const
{
    return m_model->rules();
}

void AnswerDialog::buildUi()
{
    buildTable();
    m_state->setObjectName(QStringLiteral("labelAnswerFault"));
    m_state->setTextFormat(Qt::PlainText);
    auto *middle = new QHBoxLayout;
    middle->setSpacing(8);
    middle->addWidget(m_table, 1);
    middle->addLayout(buildSide());
    body()->addLayout(middle, 1);
    body()->addWidget(m_form);
    body()->addWidget(m_state);
    body()->addLayout(buildBottom());
    resize(760, 460);
}

void AnswerDialog::buildTable()
{
    m_table->setObjectName(QStringLiteral("tableAnswers"));
    m_table->setAccessibleName(QStringLiteral("自动应答规则"));
    m_table->setModel(m_model);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setWordWrap(false);
    m_table->setShowGrid(false);
    m_table->setTabKeyNavigation(false);
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setDefaultSectionSize(26);
    QHeaderView *header = m_table->horizontalHeader();
    header->setHighlightSections(false);
    header->setSectionResizeMode(AnswerModel::Pattern, QHeaderView::Stretch);
    header->setSectionResizeMode(AnswerModel::Answer, QHeaderView::Stretch);
    header->resizeSection(AnswerModel::Name, 110);
    header->resizeSection(AnswerModel::Kind, 76);
    header->resizeSection(AnswerModel::Hits, 60);
    header->resizeSection(AnswerModel::Fault, 110);
    m_empty->setObjectName(QStringLiteral("emptyStateText"));
    m_empty->setText(QStringLiteral("还没有规则，请点击“添加”或“导入…”"));
    m_empty->setAlignment(Qt::AlignCenter);
    m_empty->setAttribute(Qt::WA_TransparentForMouseEvents);
}

QLayout *AnswerDialog::buildSide()
{
    m_up->setToolTip(QStringLiteral("多条规则同时匹配时，靠前的先应答"));
    m_down->setToolTip(m_up->toolTip());
    auto *column = new QVBoxLayout;
    column->setSpacing(4);
    for (QPushButton *part : {m_add, m_duplicate, m_remove, m_up, m_down})
        column->addWidget(part);
    column->addStretch();
    return column;
}

QLayout *AnswerDialog::buildBottom()
{
    auto *row = new QHBoxLayout;
    row->setSpacing(8);
    row->addWidget(button("btnImportAnswers", QStringLiteral("导入…"), &AnswerDialog::importRules));
    row->addWidget(button("btnExportAnswers", QStringLiteral("导出…"), &AnswerDialog::exportRules));
    row->addWidget(button("btnClearHits", QStringLiteral("计数清零"), &AnswerDialog::clearHits));
    row->addStretch();
    auto *ok = new QPushButton(QStringLiteral("确定"), this);
    ok->setObjectName(QStringLiteral("btnOk"));
    ok->setProperty("primary", true);
    ok->setDefault(true);
    connect(ok, &QPushButton::clicked, this, &AnswerDialog::accept);
    auto *cancel = new QPushButton(QStringLiteral("取消"), this);
    cancel->setObjectName(QStringLiteral("btnCancel"));
    cancel->setAutoDefault(false);
    connect(cancel, &QPushButton::clicked, this, &AnswerDialog::reject);
    row->addWidget(ok);
    row->addWidget(cancel);
    return row;
}

QPushButton *AnswerDialog::button(const char *name, const QString &text, void (AnswerDialog::*pressed)())
{
    auto *made = new QPushButton(text, this);
    made->setObjectName(QLatin1String(name));
    made->setAutoDefault(false);
    connect(made, &QPushButton::clicked, this, pressed);
    return made;
}

void AnswerDialog::setErrorColor(const QColor &color)
{
    m_errorColor = color;
    m_model->setErrorColor(color);
}

void AnswerDialog::resizeEvent(QResizeEvent *event)
{
    QtFramelessDialog::resizeEvent(event);
    m_empty->setGeometry(m_table->rect());
}

// ---- the current rule

int AnswerDialog::currentRow() const
{
    return m_table->currentIndex().row();
}

void AnswerDialog::select(int row)
{
    m_table->setCurrentIndex(m_model->index(qMin(row, m_model->rowCount() - 1), AnswerModel::Pattern));
    showCurrent();
}

void AnswerDialog::showCurrent()
{
    const int row = currentRow();
    const bool hasRoom = m_model->rowCount() < AnswerRuleFile::maxRules;
    m_empty->setVisible(m_model->rowCount() == 0);
    m_form->setEnabled(row >= 0);
    m_form->setRule(row >= 0 ? m_model->rule(row) : AnswerRule());
    showState(m_model->index(row, AnswerModel::Fault).data().toString(), true);
    m_add->setEnabled(hasRoom);
    m_duplicate->setEnabled(row >= 0 && hasRoom);
    m_remove->setEnabled(row >= 0);
    m_up->setEnabled(row > 0);
    m_down->setEnabled(row >= 0 && row + 1 < m_model->rowCount());
}

void AnswerDialog::storeCurrent()
{
    m_model->setRule(currentRow(), m_form->rule());
    showState(m_model->index(currentRow(), AnswerModel::Fault).data().toString(), true);
}

void AnswerDialog::add()
{
    m_model->add(AnswerRule());
    select(m_model->rowCount() - 1);
    m_form->focusPattern();
}

void AnswerDialog::duplicate()
{
    m_model->add(m_model->rule(currentRow()));
    select(m_model->rowCount() - 1);
}

void AnswerDialog::remove()
{
    const int row = currentRow();
    m_model->remove(row);
    select(row);
}

void AnswerDialog::moveTo(int row)
{
    m_model->move(currentRow(), row);
    m_table->scrollTo(m_table->currentIndex());
    showCurrent();
}

// ---- all rules

void AnswerDialog::clearHits()
{
    m_answers->clearCounts();
}

void AnswerDialog::importRules()
{
    const QString name =
        QtFileDialog::getOpenFileName(this, QStringLiteral("导入自动应答规则"), QString(), kFilter);
    if (name.isEmpty())
        return;
    QByteArray content;
    QString reason;
    std::optional<AnswerRules> rules;
    if (SafeFile::read(name, AnswerRuleFile::maxBytes, &content, &reason))
        rules = AnswerRuleFile::read(content, &reason);
    if (!rules)
        return showState(QStringLiteral("导入失败：%1").arg(reason), true);
    int added = 0;
    for (const AnswerRule &rule : *rules)
        added += m_model->add(rule) ? 1 : 0;
    if (added > 0)
        select(m_model->rowCount() - added);
    showState(
        QStringLiteral("已添加%1条规则").arg(added) +
            (added < rules->size() ? QStringLiteral("，最多%1条").arg(AnswerRuleFile::maxRules) : QString()),
        added < rules->size());
}

void AnswerDialog::exportRules()
{
    const QString name =
        QtFileDialog::getSaveFileName(this, QStringLiteral("导出自动应答规则"), QString(), kFilter);
    if (name.isEmpty())
        return;
    QString reason;
    if (SafeFile::write(name, AnswerRuleFile::write(m_model->rules()), &reason))
        showState(QStringLiteral("已导出%1条规则").arg(m_model->rowCount()));
    else
        showState(QStringLiteral("导出失败：%1").arg(reason), true);
}

void AnswerDialog::showState(const QString &text, bool isFault)
{
    m_state->setText(text);
    m_state->setProperty("kind", isFault ? QStringLiteral("error") : QStringLiteral("hint"));
    m_state->style()->unpolish(m_state);
    m_state->style()->polish(m_state);
}
