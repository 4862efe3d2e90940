#include "hexcomparepanel.h"

#include "hexcommand.h"
#include "hexcompareview.h"
#include "hexfilebytes.h"
#include "hexform.h"
#include "hexhitlist.h"
#include "heximagebytes.h"
#include "hexrecordreader.h"
#include "qhexedit.h"
#include "qtfiledialog.h"
#include "qtmessagetip.h"
#include "settings.h"

#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSplitter>
#include <QVBoxLayout>

#include <algorithm>

namespace {
constexpr int kSettleMs = 200; // after an edit
constexpr int kTipMs = 4000;
constexpr int kListWidth = 190;
constexpr int kBeginning = 4096; // bytes that say which form a file has
} // namespace

HexComparePanel::HexComparePanel(QHexEdit *edit, QWidget *parent)
    : QWidget(parent)
    , m_edit(edit)
    , m_watch(this)
    , m_task(this)
    , m_settle(this)
    , m_next(new HexCommand(QStringLiteral("下一处不同"), {Qt::Key_F8}, this))
    , m_previous(new HexCommand(QStringLiteral("上一处不同"), {int(Qt::SHIFT) + Qt::Key_F8}, this))
    , m_file(new QPushButton(QStringLiteral("选择文件"), this))
    , m_saved(new QPushButton(QStringLiteral("与已保存的内容"), this))
    , m_align(new QPushButton(QStringLiteral("对齐插入"), this))
    , m_reload(new QPushButton(QStringLiteral("重新载入"), this))
    , m_summary(new QLabel(this))
    , m_list(new HexHitList(edit, "hexDifferences", QStringLiteral("不同之处"), this))
    , m_view(new HexCompareView(this))
{
    setObjectName(QStringLiteral("hexComparePanel"));
    buildUi();
    m_settle.setSingleShot(true);
    connect(&m_settle, &QTimer::timeout, this, &HexComparePanel::restart);
    connect(m_file, &QPushButton::clicked, this, &HexComparePanel::chooseFile);
    connect(m_saved, &QPushButton::clicked, this, &HexComparePanel::compareWithSaved);
    connect(m_reload, &QPushButton::clicked, this, [this] { compareWithFile(m_fileName); });
    connect(m_align, &QPushButton::toggled, this, [this](bool isOn) {
        Settings::instance().hexEditPage.alignsCompare.change(isOn);
        restart();
    });
    connect(m_next, &QAction::triggered, this, [this] { step(1); });
    connect(m_previous, &QAction::triggered, this, [this] { step(-1); });
    connect(&m_watch, &HexFileWatch::changed, this, &HexComparePanel::showState);
    connect(m_view, &HexCompareView::chosen, this, [this](qint64 address) { m_edit->goTo(address); });
    connect(m_list, &HexHitList::chosen, this, &HexComparePanel::showDifference);
    connect(m_edit, &QHexEdit::contentChanged, this, [this] {
        if (m_other)
            m_task.stop(); // it reads what has changed
        if (m_with != With::Nothing)
            m_settle.start(kSettleMs);
        m_view->viewport()->update();
    });
    connect(m_edit, &QHexEdit::addressesChanged, this, [this] {
        m_view->viewport()->update();
        if (m_image) {
            m_task.stop();
            m_settle.start(0);
        }
    });
    connect(m_edit, &QHexEdit::stateChanged, this, [this] {
        if (m_with == With::Saved && m_wasModified && !m_edit->isModified())
            m_settle.start(0); // it was saved
        m_wasModified = m_edit->isModified();
        showState();
    });
    connect(m_edit, &QHexEdit::documentReplaced, this, &HexComparePanel::close);
    close();
}

void HexComparePanel::buildUi()
{
    m_file->setObjectName(QStringLiteral("btnCompareFile"));
    m_saved->setObjectName(QStringLiteral("btnCompareSaved"));
    m_saved->setToolTip(QStringLiteral("与文件打开或上次保存时的内容比较"));
    m_align->setObjectName(QStringLiteral("btnCompareAlign"));
    m_align->setCheckable(true);
    m_align->setChecked(Settings::instance().hexEditPage.alignsCompare);
    m_align->setToolTip(QStringLiteral("找出插入和删除的字节（每处最多64 KB），之后的内容仍然对齐"));
    m_reload->setObjectName(QStringLiteral("btnCompareReload"));
    m_summary->setObjectName(QStringLiteral("labelCompare"));
    m_summary->setProperty("kind", QStringLiteral("hint"));
    m_summary->setTextFormat(Qt::PlainText);
    m_summary->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    const auto button = [this](HexCommand *command, const char *name, const QString &text,
                               const QString &tip) {
        auto *made = new QPushButton(text, this);
        made->setObjectName(QLatin1String(name));
        made->setToolTip(tip);
        command->bind(made);
        return made;
    };
    auto *row = new QHBoxLayout;
    row->setSpacing(4);
    for (QPushButton *tool :
         {m_file, m_saved, m_align,
          button(m_previous, "btnPreviousDifference", QStringLiteral("上一处"), QStringLiteral("Shift+F8")),
          button(m_next, "btnNextDifference", QStringLiteral("下一处"), QStringLiteral("F8")), m_reload})
        row->addWidget(tool);
    row->addSpacing(4);
    row->addWidget(m_summary, 1);
    m_list->setCompact();
    auto *split = new QSplitter(Qt::Horizontal, this);
    split->setChildrenCollapsible(false);
    split->addWidget(m_list);
    split->addWidget(m_view);
    split->setStretchFactor(1, 1);
    split->setSizes({kListWidth, 1000});
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(2);
    column->addLayout(row);
    column->addWidget(split, 1);
    m_view->setAddresses(&m_edit->addresses());
    m_view->setPlaceholderText(QStringLiteral("选择另一个文件，与当前内容并排比较"));
}

// ---- what to compare with

void HexComparePanel::chooseFile()
{
    const QString name = QtFileDialog::getOpenFileName(this, QStringLiteral("比较的文件"), QString(),
                                                       QStringLiteral("所有文件(*)"));
    if (!name.isEmpty())
        compareWithFile(name);
}

void HexComparePanel::compareWithFile(const QString &fileName)
{
    const QString busy = m_edit->busyReason(); // which bytes to compare is not known yet
    if (!busy.isEmpty())
        return QtMessageTip::showTip(busy, kTipMs);
    close();
    auto file = std::make_unique<HexFileBytes>();
    const FileStamp stamp = FileStamp::of(fileName);
    if (!file->open(fileName))
        return QtMessageTip::showTip(
            QStringLiteral("%1 打开失败：%2").arg(QFileInfo(fileName).fileName(), file->reason()), kTipMs);
    m_with = With::File;
    m_fileName = fileName;
    m_watch.follow(fileName, stamp);
    if (isImage(fileName))
        return readImage(fileName);
    m_other = std::move(file);
    restart();
}

// Records of text are compared at their addresses, unless the editor shows the text of
// such a file as well.
bool HexComparePanel::isImage(const QString &fileName) const
{
    if (m_edit->addresses().isFixed())
        return true;
    HexFileBytes file;
    const QByteArray beginning = m_edit->document().read(0, kBeginning);
    return HexForms::ofContent(beginning, QString()) == HexForm::Bytes && file.open(fileName) &&
           HexForms::ofContent(file.read(0, kBeginning), fileName) != HexForm::Bytes;
}

// Bytes without addresses begin at the editor's first one.
void HexComparePanel::readImage(const QString &fileName)
{
    struct Reading
    {
        HexFileBytes file;
        qint64 at = 0;
        std::unique_ptr<HexRecordReader> records; // of an image
        HexDocument document;
        bool hasFailed = false;
    };
    const auto reading = std::make_shared<Reading>();
    reading->hasFailed = !reading->file.open(fileName);
    const HexForm form = HexForms::ofContent(reading->file.read(0, kBeginning), fileName);
    if (form != HexForm::Bytes)
        reading->records = std::make_unique<HexRecordReader>(form);
    m_task.start({QStringLiteral("正在读取"),
                  [reading] {
                      if (reading->hasFailed)
                          return SlicedTask::Step::Done;
                      if (reading->at >= reading->file.size())
                          return !reading->records ||
                                         reading->records->finish() == HexRecordReader::State::Done
                                     ? SlicedTask::Step::Done
                                     : SlicedTask::Step::Running;
                      qint64 inRow = 0;
                      const char *const bytes = reading->file.span(reading->at, &inRow);
                      reading->hasFailed = !bytes;
                      if (bytes && reading->records)
                          reading->records->add(bytes, static_cast<int>(inRow));
                      else if (bytes)
                          reading->document.appendContent(QByteArray(bytes, static_cast<int>(inRow)));
                      reading->at += inRow;
                      return SlicedTask::Step::Running;
                  },
                  [] { return 0; },
                  [this, reading](bool isDone) {
                      if (!isDone)
                          return;
                      if (reading->hasFailed) {
                          close();
                          return QtMessageTip::showTip(QStringLiteral("比较的文件无法读取"), kTipMs);
                      }
                      HexAddressMap addresses(m_edit->addresses().firstAddress());
                      if (reading->records) {
                          for (const QByteArray &block : reading->records->blocks())
                              reading->document.appendContent(block);
                          HexImage image = reading->records->takeImage();
                          m_faults = image.faults.count();
                          addresses = HexAddressMap(std::move(image.runs));
                      }
                      auto bytes = std::make_unique<HexImageBytes>(&m_edit->document(), m_edit->addresses(),
                                                                   std::move(reading->document), addresses);
                      m_image = bytes.get();
                      m_other = std::move(bytes);
                      m_settle.start(0); // not from within the task
                  },
                  {},
                  8});
    showState();
}

void HexComparePanel::compareWithSaved()
{
    close();
    m_with = With::Saved;
    restart();
}

void HexComparePanel::close()
{
    m_task.stop();
    m_settle.stop();
    m_with = With::Nothing;
    m_view->show(nullptr, nullptr, nullptr);
    m_list->clear({});
    m_compare.reset();
    m_other.reset();
    m_image = nullptr;
    m_elsewhere = 0;
    m_faults = 0;
    m_watch.follow(QString(), FileStamp());
    showState();
}

// ---- comparing

void HexComparePanel::restart()
{
    if (m_with == With::Nothing || (m_with == With::File && !m_other))
        return;
    if (!m_edit->busyReason().isEmpty()) { // the bytes are being read or replaced
        m_settle.start(kSettleMs);
        return;
    }
    m_task.stop();
    if (m_with == With::Saved) {
        m_view->show(nullptr, nullptr, nullptr);
        m_compare.reset();
        m_other = std::make_unique<HexDocumentBytes>(m_edit->document().savedState());
    }
    if (m_image) {
        m_image->place(m_edit->addresses());
        m_elsewhere = m_image->elsewhere();
    }
    const auto compare = std::make_shared<std::unique_ptr<HexCompare>>(std::make_unique<HexCompare>(
        m_edit->document(), *m_other, m_align->isChecked() && !m_image && !m_edit->addresses().isFixed()));
    m_task.start(
        {QStringLiteral("正在比较"),
         [compare] { return (*compare)->step() ? SlicedTask::Step::Running : SlicedTask::Step::Done; },
         [compare] { return (*compare)->permille(); },
         [this, compare](bool isDone) {
             if (!isDone)
                 return;
             m_view->show(nullptr, nullptr, nullptr);
             m_compare = std::move(*compare);
             showResult();
         },
         {},
         8});
    showState();
}

void HexComparePanel::showResult()
{
    std::vector<HexHit> hits;
    hits.reserve(m_compare->differences().size());
    for (const HexCompare::Difference &difference : m_compare->differences())
        hits.push_back({difference.left, static_cast<int>(std::min<qint64>(difference.leftLength, 1 << 30))});
    m_list->show(std::move(hits), {});
    m_view->show(&m_edit->document(), m_other.get(), m_compare.get());
    showState();
}

void HexComparePanel::showState()
{
    m_reload->setVisible(m_with == With::File && m_watch.differs());
    const QString busy = m_task.isRunning() ? m_task.name() : QString();
    const bool hasResult = m_compare && !m_compare->differences().empty();
    for (HexCommand *command : {m_next, m_previous})
        command->setRefusal(hasResult ? QString() : QStringLiteral("没有不同之处"));
    m_saved->setEnabled(m_edit->size() > 0 || m_edit->isModified());
    QString text;
    if (m_with == With::File)
        text = QFileInfo(m_fileName).fileName() + QStringLiteral("：");
    if (m_with == With::Nothing)
        text = QStringLiteral("未选择比较的对象");
    else if (!m_compare || !busy.isEmpty())
        text += busy.isEmpty() ? QStringLiteral("正在比较") : busy;
    else if (m_compare->differences().empty())
        text += QStringLiteral("完全相同");
    else
        text += QStringLiteral("%1处不同").arg(m_compare->differences().size());
    if (m_compare && m_compare->isCut())
        text += QStringLiteral("，之后的未比较");
    if (m_compare && m_compare->hasFailed())
        text += QStringLiteral("，其余部分无法读取");
    if (m_compare && m_faults > 0)
        text += QStringLiteral("，比较的文件有%1处问题").arg(m_faults);
    if (m_compare && m_elsewhere > 0)
        text += QStringLiteral("，另有%1字节在当前文件没有的地址").arg(m_elsewhere);
    if (m_reload->isVisibleTo(this))
        text += m_watch.isGone() ? QStringLiteral("（文件已不存在）") : QStringLiteral("（文件已变化）");
    m_summary->setText(text);
    m_summary->setToolTip(m_fileName);
}

// ---- going through the differences

void HexComparePanel::showDifference(int index)
{
    if (!m_compare || index < 0 || index >= static_cast<int>(m_compare->differences().size()))
        return;
    m_view->showPlace(m_compare->differences().at(static_cast<size_t>(index)).row);
}

// From the caret, so that one may go on from where one has edited.
void HexComparePanel::step(int direction)
{
    const auto &differences = m_compare->differences();
    const qint64 from = m_edit->selectionBegin();
    const auto isBefore = [](const HexCompare::Difference &difference, qint64 address) {
        return difference.left < address;
    };
    auto place =
        std::lower_bound(differences.begin(), differences.end(), direction > 0 ? from + 1 : from, isBefore);
    if (direction > 0 && place == differences.end()) {
        place = differences.begin();
        QtMessageTip::showTip(QStringLiteral("已到末尾，从开头继续"));
    } else if (direction < 0) {
        if (place == differences.begin()) {
            place = differences.end();
            QtMessageTip::showTip(QStringLiteral("已到开头，从末尾继续"));
        }
        --place;
    }
    m_edit->select(place->left, place->leftLength);
    showDifference(static_cast<int>(place - differences.begin()));
}
