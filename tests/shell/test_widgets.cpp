// What a user finds on each page at first start: every widget with its texts,
// ranges, defaults, keys and layout; then what changes when every option is
// used, and what is kept of it at the next start. Compared with the record in widgets.txt. To accept
// an intended change, copy the file that the failed test names over the record.

#include "answerdialog.h"
#include "answers.h"
#include "apppaths.h"
#include "datamanagerwidget.h"
#include "korvexresources.h"
#include "linkanswers.h"
#include "mainwindow.h"
#include "namedialog.h"
#include "peersdialog.h"
#include "peerstatistics.h"
#include "qtmessagebox.h"
#include "qtstyledialog.h"
#include "qttabbar.h"
#include "qtupdatedialog.h"
#include "qtwaitdialog.h"
#include "registertablemodel.h"
#include "ruledialog.h"
#include "settings.h"
#include "skin.h"
#include "testfiles.h"
#include "transferlogdialog.h"

#include <QtTest>
#include <QtWidgets>

namespace {

const QStringList kProperties =
    QString("objectName text title windowTitle placeholderText toolTip accessibleName accessibleDescription "
            "checkable checked readOnly maxLength minimum maximum value singleStep editable focusPolicy "
            "contextMenuPolicy shortcut shortcuts autoDefault autoRepeat autoExclusive wordWrap "
            "textInteractionFlags alignment acceptDrops undoRedoEnabled tabChangesFocus lineWrapMode "
            "horizontalScrollBarPolicy verticalScrollBarPolicy widgetResizable orientation "
            "childrenCollapsible insertPolicy maxVisibleItems selectionMode selectionBehavior editTriggers "
            "alternatingRowColors sortingEnabled cornerButtonEnabled showGrid primary kind expanding "
            "drawBase elideMode default textVisible textFormat pageStep sizeAdjustPolicy "
            "minimumContentsLength frameShape flat toolTipsVisible modal sizeGripEnabled stretchLastSection "
            "highlightSections defaultSectionSize tabKeyNavigation styleSheet singleShot timerType")
        .split(' ');

const QStringList kUsual =
    QString("0 false contextMenuPolicy=1 textInteractionFlags=4 alignment=129 "
            "maxLength=32767 maxVisibleItems=10 textFormat=2 pageStep=10 insertPolicy=3 autoRepeat=true "
            "timerType=1")
        .split(' ');

// Filled from the machine: its ports and addresses.
bool isOfTheMachine(const QObject *object)
{
    return object->inherits("LocalAddressBox") || object->inherits("PortComboBox");
}

QString valueOf(const QVariant &value)
{
    if (value.userType() == qMetaTypeId<QList<QKeySequence>>())
        return QKeySequence::listToString(value.value<QList<QKeySequence>>());
    QString text = value.canConvert<QString>() ? value.toString() : QString::number(value.toInt());
    static const QRegularExpression clock("\\d\\d:\\d\\d:\\d\\d");
    return text.replace('\n', "\\n").replace(clock, "<time>");
}

// All values that are neither empty, 0, false nor Qt's usual ones.
QString described(const QObject *object)
{
    QString line = object->metaObject()->className();
    for (const QString &name : kProperties) {
        const QVariant value = object->property(qPrintable(name));
        const QString text = value.isValid() ? valueOf(value) : QString();
        if (!text.isEmpty() && !kUsual.contains(text) && !kUsual.contains(name + '=' + text))
            line += QString(" %1=%2").arg(name, text);
    }
    if (!object->property("pixmap").value<QPixmap>().isNull())
        line += " picture";
    return object->property("icon").value<QIcon>().isNull() ? line : line + " icon";
}

QString describedLayout(const QLayout *layout)
{
    const QMargins margins = layout->contentsMargins();
    QString line = QString::asprintf("%s margins=%d,%d,%d,%d spacing=%d", layout->metaObject()->className(),
                                     margins.left(), margins.top(), margins.right(), margins.bottom(),
                                     layout->spacing());
    if (const auto *grid = qobject_cast<const QGridLayout *>(layout)) {
        line += QString::asprintf(" gaps=%d,%d stretch=", grid->horizontalSpacing(), grid->verticalSpacing());
        for (int i = 0; i < grid->columnCount(); ++i)
            line += QString::number(grid->columnStretch(i));
    }
    for (int i = 0; i < layout->count(); ++i) {
        if (const auto *box = qobject_cast<const QBoxLayout *>(layout))
            line += ' ' + QString::number(box->stretch(i));
        if (const auto *grid = qobject_cast<const QGridLayout *>(layout)) {
            int place[4];
            grid->getItemPosition(i, &place[0], &place[1], &place[2], &place[3]);
            line += QString::asprintf(" %d,%d,%d,%d", place[0], place[1], place[2], place[3]);
        }
        if (const QLayout *inner = layout->itemAt(i)->layout())
            line += " (" + describedLayout(inner) + ')';
    }
    return line;
}

// The pages of a stack in its order, and for a viewport what it holds.
QObjectList childrenOf(const QObject *object)
{
    QObjectList children;
    if (const auto *stack = qobject_cast<const QStackedWidget *>(object)) {
        for (int i = 0; i < stack->count(); ++i)
            children += stack->widget(i);
        return children;
    }
    const auto *menu = qobject_cast<const QMenu *>(object); // whose own action has its title
    for (QObject *child : object->children())
        if (!menu || child != menu->menuAction())
            children += child->objectName().endsWith("viewport") ? child->children() : QObjectList{child};
    return children;
}

void describe(const QObject *object, int depth, QStringList *lines)
{
    const QString indent(depth, ' ');
    const QString name = object->objectName();
    const auto *widget = qobject_cast<const QWidget *>(object);
    const bool isPart =
        widget || qobject_cast<const QAction *>(object) || qobject_cast<const QTimer *>(object);
    if ((name.startsWith("qt_") && !name.endsWith("stackedwidget")) || name.startsWith("Scroll") || !isPart ||
        object->inherits("QComboBoxPrivateContainer"))
        return; // Qt's own
    *lines += indent + described(object);
    if (!widget)
        return;
    if (widget->isWindow() && !widget->windowIcon().isNull())
        lines->last() += " icon";
    if (!widget->isEnabled() && (!widget->parentWidget() || widget->parentWidget()->isEnabled()))
        lines->last() += " disabled";
    if (widget->isHidden() && !widget->isWindow())
        lines->last() += " hidden";
    const QSize maximum = widget->maximumSize();
    if (maximum != QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX) &&
        !widget->inherits("FormPanel")) // has that of its texts
        lines->last() += QString::asprintf(" at most %dx%d", maximum.width(), maximum.height());
    if (const auto *label = qobject_cast<const QLabel *>(object); label && label->buddy())
        lines->last() += " for " + label->buddy()->objectName();
    const QSizePolicy policy = widget->sizePolicy();
    if (policy.horizontalPolicy() == QSizePolicy::Ignored ||
        policy.verticalPolicy() == QSizePolicy::Ignored || policy.retainSizeWhenHidden() ||
        policy.verticalStretch() > 0)
        lines->last() +=
            QString::asprintf(" policy %d,%d,%d,%d", policy.horizontalPolicy(), policy.verticalPolicy(),
                              policy.verticalStretch(), policy.retainSizeWhenHidden());
    if (const auto *combo = qobject_cast<const QComboBox *>(object); combo && combo->completer())
        lines->last() += " completes";
    if (const auto *combo = qobject_cast<const QComboBox *>(object); combo && !isOfTheMachine(widget)) {
        QStringList items;
        for (int i = 0; i < combo->count(); ++i)
            items += combo->itemText(i) + '=' + combo->itemData(i).toString();
        lines->last() += QString(" [%1] %2").arg(items.join('|'), combo->currentText());
    }
    const auto *table = qobject_cast<const QTableView *>(object);
    for (int row = 0; table && row < qMin(10, table->model()->rowCount()); ++row) {
        *lines += indent + " row";
        for (int column = 0; column < table->model()->columnCount(); ++column)
            for (const int role :
                 {Qt::DisplayRole, Qt::CheckStateRole, Qt::ToolTipRole, Qt::AccessibleTextRole})
                lines->last() += '|' + valueOf(table->model()->index(row, column).data(role).toString());
    }
    if (isOfTheMachine(widget))
        return;
    if (widget->layout() && !widget->inherits("QStackedWidget"))
        *lines += indent + " " + describedLayout(widget->layout());
    for (const QObject *child : childrenOf(object))
        describe(child, depth + 1, lines);
}

// The widgets in the order in which the Tab key visits them.
QString keyOrder(QWidget *window)
{
    QString order = "keys:";
    for (QWidget *at = window->nextInFocusChain(); at != window; at = at->nextInFocusChain())
        if ((at->focusPolicy() & Qt::TabFocus) && !at->focusProxy() && at->window() == window)
            order += ' ' + (at->objectName().isEmpty() ? at->metaObject()->className() : at->objectName());
    return order;
}

QStringList described(QWidget &window)
{
    QStringList lines;
    describe(&window, 0, &lines);
    return lines << keyOrder(&window);
}

QStringList onlyIn(const QStringList &these, const QStringList &others)
{
    QStringList own;
    for (const QString &line : these)
        if (!others.contains(line))
            own += line;
    return own;
}

// A part that is described already, in the same way, is not described again.
QStringList withoutRepeats(const QStringList &lines)
{
    const auto depth = [&lines](int i) { return lines.at(i).indexOf(QRegularExpression("\\S")); };
    QSet<QString> seen;
    QStringList kept;
    for (int i = 0; i < lines.size(); ++i) {
        int end = i + 1;
        QString part = lines.at(i).trimmed();
        for (; end < lines.size() && depth(end) > depth(i); ++end)
            part += '\n' + lines.at(end).mid(depth(i));
        const bool isKnown = end - i > 2 && seen.contains(part);
        kept += isKnown ? lines.at(i) + ", as above" : lines.at(i);
        seen += part;
        i = isKnown ? end - 1 : i;
    }
    return kept;
}

void showAll(MainWindow *window)
{
    window->resize(1600, 1200); // no panel scrolls
    window->show();
    auto *const tabs = window->findChild<QtTabBar *>();
    for (int i = tabs->count() - 1; i >= 0; --i) {
        tabs->setCurrentIndex(i);
        QCoreApplication::processEvents();
    }
}

// Chooses the last entry of every list, and presses every check box and every
// button that only changes the view.
void useOptions(const QWidget &window)
{
    for (auto *combo : window.findChildren<QComboBox *>())
        if (!isOfTheMachine(combo))
            combo->setCurrentIndex(combo->count() - 1);
    for (auto *spin : window.findChildren<QSpinBox *>())
        spin->stepUp();
    for (auto *button : window.findChildren<QAbstractButton *>())
        if (button->isEnabled() &&
            (button->isCheckable() || button->objectName() == "btnFold" || button->objectName() == "btnMode"))
            button->click();
    QSet<QAction *> used;
    for (int i = 0; i < 2; ++i) // some open others
        for (auto *action : window.findChildren<QAction *>())
            if (action->isCheckable() && action->text() != "使用着色规则" && !used.contains(action)) {
                used += action;
                action->trigger();
            }
    QCoreApplication::processEvents();
}

} // namespace

class TestWidgets : public QObject
{
    Q_OBJECT

private slots:
    void areAsRecorded()
    {
        initKorvexResources();
        chooseFile({}); // of the log that is switched on
        QTemporaryDir root;
        AppPaths::setRoot(root.path());
        AppPaths::makeFolders();
        Settings::writeDefaults();
        Settings::load();
        Skin::apply(0);
        auto window = std::make_unique<MainWindow>();
        showAll(window.get());
        const QStringList before = described(*window);
        const QList<QByteArray> settings = contentOf(AppPaths::configFile()).split('\n');
        QStringList lines = withoutRepeats(before);
        QtStyleDialog style(QtStyleDialog::SendArea);
        QtMessageBox box;
        QtWaitDialog wait("wait");
        QtUpdateDialog update;
        TransferLogDialog log("log");
        RuleDialog noRules, rules;
        rules.findChild<QPushButton *>("btnCommonRules")->click();
        LinkAnswers links;
        AnswerDialog answers({}, &links);
        PeerStatistics peers;
        constexpr qint64 noonUs = 12 * 3600 * 1000000LL; // the same day everywhere
        peers.received({0, QHostAddress("10.0.0.1"), 80}, "one", noonUs);
        peers.sent({0, QHostAddress("10.0.0.1"), 80}, 7, noonUs);
        PeersDialog statistics(&peers);
        NameDialog naming("name", "of", 9);
        RegisterTableModel table;
        DataManagerWidget read(DataManagerWidget::Read, &table);
        DataManagerWidget write(DataManagerWidget::Write, &table);
        for (QWidget *dialog :
             std::initializer_list<QWidget *>{&style, &box, &wait, &update, &log, &noRules, &rules, &answers,
                                              &read, &write, &statistics, &naming})
            lines += described(*dialog);
        useOptions(*window);
        const QStringList after = described(*window);
        lines += "after every option was used:";
        lines += onlyIn(after, before);
        lines += "settings that were changed by it:";
        for (const QByteArray &line : contentOf(AppPaths::configFile()).split('\n'))
            if (!settings.contains(line))
                lines += line;
        window.reset();
        Settings::load();
        window = std::make_unique<MainWindow>();
        showAll(window.get());
        lines += "after a new start:";
        lines += onlyIn(described(*window), after);
        const QByteArray actual = lines.join('\n').toUtf8() + '\n';
        const QByteArray expected = contentOf(QFINDTESTDATA("widgets.txt"));
        const QString name = QDir::current().filePath("widgets.actual.txt");
        QVERIFY(writeFile(name, actual));
        const QList<QByteArray> were = expected.split('\n');
        const QList<QByteArray> are = actual.split('\n');
        for (int i = 0; i < qMin(were.size(), are.size()); ++i)
            QVERIFY2(were.at(i) == are.at(i), "line " + QByteArray::number(i + 1) + " of " + name.toUtf8() +
                                                  ":\n" + are.at(i) + "\ninstead of\n" + were.at(i));
        QCOMPARE(are.size(), were.size());
    }
};

QTEST_MAIN(TestWidgets)
#include "test_widgets.moc"
