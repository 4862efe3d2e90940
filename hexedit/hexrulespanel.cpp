#include "hexrulespanel.h"

#include "hexcommand.h"
#include "hexnoteskeeper.h"
#include "hexparse.h"
#include "qhexedit.h"
#include "qtmessagetip.h"
#include "settings.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <memory>

namespace {

enum Column { Rule, Outcome, Renew, Columns };
constexpr int kRowHeight = 22;
constexpr int kTipMs = 3000;
const auto kImpossible = QStringLiteral("范围或地址无效：应在文件内、没有空隙，校验值不在自己的范围内");

} // namespace

HexRulesPanel::HexRulesPanel(QHexEdit *edit, HexNotesKeeper *keeper, QWidget *parent)
    : QWidget(parent)
    , m_edit(edit)
    , m_keeper(keeper)
    , m_compute(new HexCommand(QStringLiteral("计算"), {}, this))
    , m_write(new HexCommand(QStringLiteral("写入"), {}, this))
    , m_keep(new HexCommand(QStringLiteral("存为规则"), {}, this))
    , m_check(new HexCommand(QStringLiteral("全部检查"), {}, this))
    , m_remove(new HexCommand(QStringLiteral("删除规则"), {}, this))
    , m_kind(new QComboBox(this))
    , m_byteOrder(new QComboBox(this))
    , m_crc(new QLineEdit(this))
    , m_outcome(new QLabel(this))
    , m_table(new QTableWidget(0, Columns, this))
{
    setObjectName(QStringLiteral("hexRulesPanel"));
    buildUi();
    Settings::HexEditPage &kept = Settings::instance().hexEditPage;
    m_crc->setText(kept.checksumForm->isEmpty() ? HexDigest::crcText(QStringLiteral("CRC-32"))
                                                : kept.checksumForm.value());
    m_memory.add(m_kind, &kept.checksumKind);
    connect(m_crc, &QLineEdit::textEdited, this,
            [&kept](const QString &text) { kept.checksumForm.change(text); });
    connect(m_kind, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &HexRulesPanel::showKind);
    connect(m_compute, &QAction::triggered, this, &HexRulesPanel::compute);
    connect(m_write, &QAction::triggered, this, &HexRulesPanel::writeValue);
    connect(m_keep, &QAction::triggered, this, &HexRulesPanel::keepRule);
    connect(m_check, &QAction::triggered, this, &HexRulesPanel::check);
    connect(m_remove, &QAction::triggered, this, &HexRulesPanel::removeRule);
    connect(m_compare, &QLineEdit::textChanged, this, &HexRulesPanel::showValue);
    connect(m_table, &QTableWidget::itemChanged, this, &HexRulesPanel::store);
    connect(m_table, &QTableWidget::itemSelectionChanged, this, &HexRulesPanel::showState);
    connect(m_keeper, &HexNotesKeeper::changed, this, &HexRulesPanel::showNotes);
    connect(m_edit, &QHexEdit::stateChanged, this, &HexRulesPanel::showState);
    connect(m_edit, &QHexEdit::contentChanged, this, [this] {
        m_value.clear(); // of other bytes
        showValue();
        for (int row = 0; row < m_table->rowCount(); ++row)
            showOutcome(row, QString(), false);
    });
    showKind();
    showNotes();
}

QLineEdit *HexRulesPanel::addField(QHBoxLayout *row, const QString &label, const char *name,
                                   const QString &text)
{
    auto *caption = new QLabel(label, this);
    auto *field = new QLineEdit(text, this);
    field->setObjectName(QLatin1String(name));
    field->setAccessibleName(label);
    caption->setBuddy(field);
    row->addWidget(caption);
    row->addWidget(field);
    return field;
}

void HexRulesPanel::buildUi()
{
    const auto button = [this](QHBoxLayout *row, HexCommand *command, const char *name) {
        auto *made = new QPushButton(command->text(), this);
        made->setObjectName(QLatin1String(name));
        command->bind(made);
        row->addWidget(made);
        return made;
    };
    m_kind->setObjectName(QStringLiteral("comboDigest"));
    m_kind->setAccessibleName(QStringLiteral("校验算法"));
    m_kind->addItems(HexDigest::names());
    m_crc->setObjectName(QStringLiteral("editDigestCrc"));
    m_crc->setAccessibleName(QStringLiteral("CRC参数"));
    m_crc->setToolTip(
        QStringLiteral("位数,多项式,初值,输入反转,输出反转,结果异或；位数为十进制（3到32），其余为十六进制"));
    m_byteOrder->setObjectName(QStringLiteral("comboDigestOrder"));
    m_byteOrder->setAccessibleName(QStringLiteral("字节序"));
    m_byteOrder->addItems({QStringLiteral("小端"), QStringLiteral("大端")});
    auto *first = new QHBoxLayout;
    first->setSpacing(4);
    first->addWidget(m_kind);
    first->addWidget(m_crc, 2);
    m_begin = addField(first, QStringLiteral("从"), "editDigestBegin", QStringLiteral("0"));
    m_end = addField(first, QStringLiteral("到"), "editDigestEnd", QStringLiteral("end-4"));
    m_end->setToolTip(QStringLiteral("最后一个字节之后的地址，十六进制；end为文件末尾，如end-4"));
    auto *take = new QPushButton(QStringLiteral("取选中"), this);
    take->setObjectName(QStringLiteral("btnDigestSelection"));
    connect(take, &QPushButton::clicked, this, &HexRulesPanel::takeSelection);
    first->addWidget(take);
    button(first, m_compute, "btnDigestCompute");
    auto *second = new QHBoxLayout;
    second->setSpacing(4);
    m_result = addField(second, QStringLiteral("结果"), "editDigestResult", QString());
    m_result->setReadOnly(true);
    m_compare = addField(second, QStringLiteral("对比"), "editDigestCompare", QString());
    m_compare->setPlaceholderText(QStringLiteral("粘贴已知的值"));
    m_outcome->setObjectName(QStringLiteral("labelDigestCompare"));
    second->addWidget(m_outcome);
    m_at = addField(second, QStringLiteral("存放于"), "editDigestAt", QStringLiteral("end-4"));
    second->addWidget(m_byteOrder);
    button(second, m_write, "btnDigestWrite")->setToolTip(QStringLiteral("把结果写到该地址，可以撤销"));
    button(second, m_keep, "btnDigestKeep")
        ->setToolTip(QStringLiteral("随文件保存，打开文件时检查，保存时可以更新"));
    second->setStretch(1, 2);
    second->setStretch(3, 2);
    auto *third = new QVBoxLayout;
    third->setSpacing(4);
    auto *tools = new QHBoxLayout;
    button(tools, m_check, "btnDigestCheck");
    third->addLayout(tools);
    auto *more = new QHBoxLayout;
    button(more, m_remove, "btnDigestRemove");
    third->addLayout(more);
    third->addStretch();
    m_table->setObjectName(QStringLiteral("tableDigestRules"));
    m_table->setAccessibleName(QStringLiteral("校验规则"));
    m_table->setHorizontalHeaderLabels(
        {QStringLiteral("规则"), QStringLiteral("检查结果"), QStringLiteral("保存时更新")});
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setTabKeyNavigation(false);
    m_table->verticalHeader()->setVisible(false);
    m_table->verticalHeader()->setDefaultSectionSize(kRowHeight);
    m_table->horizontalHeader()->setHighlightSections(false);
    m_table->horizontalHeader()->setSectionResizeMode(Rule, QHeaderView::Stretch);
    m_table->setColumnWidth(Outcome, 190);
    m_table->setColumnWidth(Renew, 90);
    auto *rules = new QHBoxLayout;
    rules->setSpacing(4);
    rules->addWidget(m_table, 1);
    rules->addLayout(third);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 2, 0, 0);
    column->setSpacing(4);
    column->addLayout(first);
    column->addLayout(second);
    column->addLayout(rules, 1);
}

// ---- one checksum

HexRule HexRulesPanel::typedRule() const
{
    HexRule rule;
    rule.digest = m_kind->currentText();
    rule.crc = rule.digest == HexDigest::customCrc() ? m_crc->text().trimmed() : QString();
    rule.begin = m_begin->text().trimmed();
    rule.end = m_end->text().trimmed();
    rule.at = m_at->text().trimmed();
    rule.isLittleEndian = m_byteOrder->currentIndex() == 0;
    return rule;
}

void HexRulesPanel::showKind()
{
    const QString named = HexDigest::crcText(m_kind->currentText());
    const bool isCustom = m_kind->currentText() == HexDigest::customCrc();
    m_crc->setVisible(isCustom || !named.isEmpty());
    m_crc->setReadOnly(!isCustom);
    m_byteOrder->setEnabled(!HexDigest::isHash(m_kind->currentText()));
    const QString &custom = Settings::instance().hexEditPage.checksumForm;
    if (!isCustom)
        m_crc->setText(named);
    else if (!custom.isEmpty())
        m_crc->setText(custom);
    m_crc->setCursorPosition(0);
}

void HexRulesPanel::takeSelection()
{
    const auto text = [](qint64 address) { return QString::number(address, 16).toUpper(); };
    const qint64 begin = m_edit->selectionBegin();
    const qint64 length = m_edit->selectionLength();
    if (length == 0) {
        QtMessageTip::showBelow(m_begin, QStringLiteral("请先选中内容"));
        return;
    }
    m_begin->setText(text(m_edit->shownAddress(begin)));
    m_end->setText(text(m_edit->shownAddress(begin + length - 1) + 1));
}

// Where the checksum would stand does not matter here.
void HexRulesPanel::compute()
{
    const HexRule rule = typedRule();
    auto digest = HexDigest::make(rule.digest, rule.crc);
    if (!digest)
        return QtMessageTip::showBelow(m_crc, QStringLiteral("CRC参数无效"), kTipMs);
    const auto address = [this](const QString &text) {
        return HexParse::address(text, 16, 0, m_edit->shownAddress(m_edit->size()));
    };
    const auto begin = address(rule.begin), end = address(rule.end);
    const auto from = begin ? m_edit->addresses().offsetOf(*begin, m_edit->size()) : std::nullopt;
    const auto last = end && *end > 0 ? m_edit->addresses().offsetOf(*end - 1, m_edit->size()) : std::nullopt;
    if (!from || !last || *last < *from || m_edit->addresses().endOf(*from, m_edit->size()) <= *last)
        return QtMessageTip::showBelow(m_begin, QStringLiteral("范围无效：应在文件内，没有空隙"), kTipMs);
    const auto job = std::make_shared<HexDigestJob>(m_edit->document(), std::move(*digest), *from, *last + 1);
    m_edit->task()->start({QStringLiteral("正在计算校验"),
                           [job] { return job->step() ? SlicedTask::Step::Running : SlicedTask::Step::Done; },
                           [job] { return job->permille(); },
                           [this, job](bool done) {
                               m_value = done ? job->value() : QByteArray();
                               showValue();
                           },
                           {},
                           8});
}

void HexRulesPanel::showValue()
{
    const QString value = QString::fromLatin1(m_value.toHex()).toUpper();
    m_result->setText(value);
    m_result->setCursorPosition(0);
    QString known = m_compare->text().toUpper().remove(QLatin1Char(' '));
    if (known.startsWith(QLatin1String("0X")))
        known = known.mid(2);
    QByteArray reversed = m_value;
    std::reverse(reversed.begin(), reversed.end());
    const bool isSame = known == value;
    const bool isReversed = known == QString::fromLatin1(reversed.toHex()).toUpper();
    QString text;
    if (!known.isEmpty() && !value.isEmpty())
        text = isSame       ? QStringLiteral("一致")
               : isReversed ? QStringLiteral("一致（字节序相反）")
                            : QStringLiteral("不同");
    m_outcome->setText(text);
    m_outcome->setProperty("kind", isSame || isReversed ? QString() : QStringLiteral("error"));
    m_outcome->style()->unpolish(m_outcome);
    m_outcome->style()->polish(m_outcome);
    showState();
}

void HexRulesPanel::writeValue()
{
    const HexRule rule = typedRule();
    const auto places = rule.places(m_edit->addresses(), m_edit->size());
    if (!places || places->bytes != m_value.size())
        return QtMessageTip::showBelow(m_at, kImpossible, kTipMs);
    const QByteArray bytes = rule.ordered(m_value);
    m_edit->document().replace(places->at, bytes.size(), bytes);
    m_edit->contentEdited(places->at);
    m_edit->select(places->at, bytes.size());
}

// ---- rules

void HexRulesPanel::keepRule()
{
    const HexRule rule = typedRule();
    if (!rule.places(m_edit->addresses(), m_edit->size()))
        return QtMessageTip::showBelow(m_at, kImpossible, kTipMs);
    HexNotes notes = m_keeper->notes();
    notes.rules.append(rule);
    m_keeper->change(notes);
    check();
}

void HexRulesPanel::removeRule()
{
    HexNotes notes = m_keeper->notes();
    notes.rules.remove(m_table->currentRow());
    m_keeper->change(notes);
}

void HexRulesPanel::store(QTableWidgetItem *item)
{
    if (m_isShowing || item->column() != Renew || item->row() >= m_keeper->notes().rules.size())
        return;
    HexNotes notes = m_keeper->notes();
    notes.rules[item->row()].renews = item->checkState() == Qt::Checked;
    m_keeper->change(notes);
}

void HexRulesPanel::showNotes()
{
    m_isShowing = true;
    const auto &rules = m_keeper->notes().rules;
    m_table->setRowCount(rules.size());
    for (int row = 0; row < rules.size(); ++row) {
        const QTableWidgetItem *const old = m_table->item(row, Rule);
        const bool isSame = old && old->text() == rules.at(row).text();
        if (!isSame) {
            m_table->setItem(row, Rule, new QTableWidgetItem(rules.at(row).text()));
            m_table->setItem(row, Outcome, new QTableWidgetItem);
        }
        auto *renew = new QTableWidgetItem;
        renew->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
        renew->setCheckState(rules.at(row).renews ? Qt::Checked : Qt::Unchecked);
        m_table->setItem(row, Renew, renew);
    }
    m_isShowing = false;
    showState();
}

void HexRulesPanel::showOutcome(int rule, const QString &text, bool isWrong)
{
    QTableWidgetItem *const item = m_table->item(rule, Outcome);
    if (!item)
        return;
    m_isShowing = true;
    item->setText(text);
    item->setData(Qt::ForegroundRole, isWrong ? QVariant(QColor(0xf8, 0x69, 0x34)) : QVariant());
    m_isShowing = false;
}

void HexRulesPanel::showState()
{
    const QString busy = m_edit->busyReason();
    const QString noFile = m_keeper->hasFile() ? busy : QStringLiteral("请先打开文件");
    const auto &rules = m_keeper->notes().rules;
    const QString noRule = rules.isEmpty() ? QStringLiteral("还没有规则") : busy;
    m_compute->setRefusal(noFile);
    m_write->setRefusal(m_value.isEmpty() ? QStringLiteral("请先计算") : m_edit->editRefusal());
    m_keep->setRefusal(noFile);
    m_check->setRefusal(noRule);
    const bool isRule = m_table->currentRow() >= 0 && m_table->currentRow() < rules.size();
    m_remove->setRefusal(isRule ? busy : QStringLiteral("请先选中规则"));
}

// Each rule after those whose checksums are among its bytes. Impossible are rules that need
// each other, and those that would write where another one does.
QVector<HexRulesPanel::Run> HexRulesPanel::inOrder(const QVector<Run> &runs)
{
    const auto writesInto = [](const HexRule::Places &from, qint64 begin, qint64 end) {
        return from.at < end && from.at + from.bytes > begin;
    };
    const auto needs = [&runs, writesInto](int rule, int other) {
        return writesInto(runs.at(other).places, runs.at(rule).places.begin, runs.at(rule).places.end);
    };
    QVector<int> needed(runs.size(), 0);
    QVector<int> order;
    for (int rule = 0; rule < runs.size(); ++rule) {
        for (int other = 0; other < runs.size(); ++other)
            needed[rule] += needs(rule, other) ? 1 : 0;
        if (needed.at(rule) == 0)
            order.append(rule);
    }
    QVector<Run> sorted;
    for (int i = 0; i < order.size(); ++i) { // grows
        Run run = runs.at(order.at(i));
        const bool isTaken = std::any_of(sorted.cbegin(), sorted.cend(), [&](const Run &other) {
            return writesInto(other.places, run.places.at, run.places.at + run.places.bytes);
        });
        if (isTaken)
            run.places = {};
        sorted.append(run);
        for (int rule = 0; rule < runs.size(); ++rule)
            if (needs(rule, order.at(i)) && --needed[rule] == 0)
                order.append(rule);
    }
    for (int rule = 0; rule < runs.size(); ++rule) {
        if (needed.at(rule) > 0) {
            sorted.append(runs.at(rule));
            sorted.last().places = {};
        }
    }
    return sorted;
}

// One after the other, as one piece of work. Impossible rules have no value. To be renewed,
// a rule is computed over the new values of those before it.
void HexRulesPanel::runRules(const QVector<int> &rows, Purpose purpose,
                             const std::function<void(bool, const QVector<Run> &)> &ended)
{
    struct Work
    {
        QVector<Run> runs;
        int at = 0;
        std::optional<HexDocument> renewed;
        std::unique_ptr<HexDigestJob> job;
    };
    const auto work = std::make_shared<Work>();
    for (const int row : rows) {
        Run run{row, m_keeper->notes().rules.at(row), {}, {}};
        run.places = run.rule.places(m_edit->addresses(), m_edit->size()).value_or(HexRule::Places());
        work->runs.append(run);
    }
    if (purpose == Purpose::Renew)
        work->runs = inOrder(work->runs);
    if (purpose == Purpose::Renew && work->runs.size() > 1)
        work->renewed = m_edit->document();
    m_edit->task()->start(
        {purpose == Purpose::Renew ? QStringLiteral("正在更新校验") : QStringLiteral("正在检查校验"),
         [this, work] {
             if (work->at >= work->runs.size())
                 return SlicedTask::Step::Done;
             Run &run = work->runs[work->at];
             if (run.places.bytes == 0) {
                 ++work->at;
                 return SlicedTask::Step::Running;
             }
             if (!work->job)
                 work->job = std::make_unique<HexDigestJob>(
                     work->renewed ? *work->renewed : m_edit->document(),
                     *HexDigest::make(run.rule.digest, run.rule.crc), run.places.begin, run.places.end);
             if (!work->job->step()) {
                 run.value = work->job->value();
                 work->job.reset();
                 ++work->at;
                 if (work->renewed)
                     work->renewed->replace(run.places.at, run.places.bytes, run.rule.ordered(run.value));
             }
             return SlicedTask::Step::Running;
         },
         [work] { return work->at * 1000 / qMax(1, work->runs.size()); },
         [work, ended](bool done) { ended(done, work->runs); },
         {},
         8});
}

void HexRulesPanel::check()
{
    if (m_keeper->notes().rules.isEmpty() || !m_edit->busyReason().isEmpty())
        return;
    QVector<int> rows;
    for (int i = 0; i < m_keeper->notes().rules.size(); ++i)
        rows.append(i);
    runRules(rows, Purpose::Check, [this](bool done, const QVector<Run> &runs) {
        int wrong = 0;
        for (const Run &run : runs) {
            if (!done)
                continue;
            const QByteArray there = m_edit->document().read(run.places.at, run.places.bytes);
            const QByteArray right = run.rule.ordered(run.value);
            const bool isRight = !run.value.isEmpty() && there == right;
            wrong += isRight ? 0 : 1;
            showOutcome(run.row,
                        run.value.isEmpty() ? QStringLiteral("无法计算：范围无效")
                        : isRight           ? QStringLiteral("一致")
                                            : QStringLiteral("不同，应为%1").arg(HexParse::text(right)),
                        !isRight);
        }
        if (done)
            emit checked(wrong);
    });
}

void HexRulesPanel::renew(const std::function<void(bool)> &next)
{
    QVector<int> rows;
    for (int i = 0; i < m_keeper->notes().rules.size(); ++i)
        if (m_keeper->notes().rules.at(i).renews)
            rows.append(i);
    if (rows.isEmpty() || !m_edit->editRefusal().isEmpty())
        return next(true);
    runRules(rows, Purpose::Renew, [this, next](bool done, const QVector<Run> &runs) {
        if (!done)
            return next(false);
        HexDocument::Batch batch;
        int renewed = 0, impossible = 0;
        QVector<Run> sorted = runs;
        std::sort(sorted.begin(), sorted.end(),
                  [](const Run &left, const Run &right) { return left.places.at < right.places.at; });
        for (const Run &run : qAsConst(sorted)) {
            const QByteArray bytes = run.rule.ordered(run.value);
            if (run.value.isEmpty()) {
                ++impossible;
            } else if (m_edit->document().read(run.places.at, bytes.size()) != bytes) {
                m_edit->document().addToBatch(batch, run.places.at, bytes.size(), bytes);
                ++renewed;
            }
        }
        const qint64 caret = m_edit->address();
        if (renewed > 0) {
            m_edit->document().applyBatch(batch);
            m_edit->contentEdited(caret);
            emit notify(Notice::information(QStringLiteral("保存前更新了%1处校验").arg(renewed)));
        }
        if (impossible > 0)
            emit notify(
                Notice::error(QStringLiteral("%1条校验规则的范围无效或互相冲突，没有更新").arg(impossible)));
        next(true);
    });
}
