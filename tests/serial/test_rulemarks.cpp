// Color rules in the receive displays, and the dialog in which the user edits them.

#include "answers.h"
#include "contrast.h"
#include "findbar.h"
#include "freshfolder.h"
#include "korvexresources.h"
#include "linesearch.h"
#include "qtterminalwidget.h"
#include "ruledialog.h"
#include "settings.h"
#include "sharedrules.h"
#include "testfiles.h"
#include "viewmenu.h"
#include "waitfor.h"

#include <QAbstractButton>
#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPaintEvent>
#include <QTableView>

namespace {

const QColor kRed(0xC80000);
const QColor kBlue(0x0000C8);

ColorRule ruleFor(const QString &text, const QColor &color, bool isForLine)
{
    return {{text, true, false, false}, color.rgb() & 0xFFFFFF, isForLine, true};
}

} // namespace

class TestRuleMarks : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        initKorvexResources();
        m_root = std::make_unique<FreshFolder>();
        SharedRules::instance().load();
        m_terminal = std::make_unique<QtTerminalWidget>();
        show(m_terminal.get(), Qt::white);
    }
    void cleanup() { m_terminal.reset(); }

    void colorsAllDisplaysReadably()
    {
        QtTerminalWidget dark;
        show(&dark, QColor(0x30, 0x2f, 0x2f));
        for (QtTerminalWidget *terminal : {m_terminal.get(), &dark})
            receive(terminal, "mmm error mmm\nmmm warn mmm\nmmm\n");
        SharedRules::instance().store({ruleFor("error", kRed, true), ruleFor("warn", kBlue, false)}, true);
        QCOMPARE(strongest(m_terminal.get(), 0), kRed);
        QVERIFY(colorsOf(m_terminal.get(), 0) != colorsOf(m_terminal.get(), 1));
        QVERIFY(!colorsOf(m_terminal.get(), 0).contains(QColor(Qt::black).rgb()));
        QVERIFY(colorsOf(m_terminal.get(), 1).contains(QColor(Qt::black).rgb()));
        QVERIFY(colorsOf(m_terminal.get(), 1).contains(kBlue.rgb()));
        const QColor onDark = strongest(&dark, 0);
        QVERIFY2(Contrast::ratio(onDark, QColor(0x30, 0x2f, 0x2f)) >= 4.5, qPrintable(onDark.name()));
        QVERIFY(onDark.red() > 200 && qAbs(onDark.hue() - kRed.hue()) < 5);
        SharedRules::instance().store(SharedRules::instance().rules(), false);
        QCOMPARE(strongest(m_terminal.get(), 0), QColor(Qt::black));
    }

    // Of several blocks, also when their beginning is dropped or the match comes last.
    void colorsLongLines()
    {
        SharedRules::instance().store({ruleFor("E (", kRed, true), ruleFor("late", kBlue, true)}, true);
        m_terminal->setLimits(20000, 1000);
        const QByteArray words = QByteArray("mmmmmmmmm ").repeated(1000);
        receive(m_terminal.get(), "E (1) x: " + words);
        QCOMPARE(strongest(m_terminal.get(), 5), kRed);
        for (int i = 0; i < 5; ++i)
            receive(m_terminal.get(), words);
        QVERIFY(!m_terminal->document()->toPlainText().contains('E'));
        QCOMPARE(strongest(m_terminal.get(), 5), kRed);
        receive(m_terminal.get(), "\nno " + words.left(300));
        QCOMPARE(strongest(m_terminal.get(), 5), kRed);
        m_terminal->clearTerminal();
        receive(m_terminal.get(), words.left(2100));
        QCOMPARE(strongest(m_terminal.get(), 0), QColor(Qt::black));
        QCoreApplication::processEvents();
        m_painted = QRegion();
        m_terminal->viewport()->installEventFilter(this);
        receive(m_terminal.get(), "late");
        WAIT_FOR(m_painted.contains(QPoint(20, 8)));
        QCOMPARE(strongest(m_terminal.get(), 0), kBlue);
    }

    // Text and ground of sequences, corrected where the text can't be read.
    void drawsTheColorsOfSequences()
    {
        m_terminal->setView({LineStamp::Time::None, false, false, true, {true, false}});
        m_terminal->resize(600, 500);
        const std::tuple<const char *, QRgb, QRgb> rows[] = {
            {"0", 0x000000, 0xFFFFFF},        {"1", 0x000000, 0xFFFFFF},
            {"3", 0x000000, 0xFFFFFF},        {"4", 0x000000, 0xFFFFFF},
            {"31", 0xCD3131, 0xFFFFFF},       {"7", 0xFFFFFF, 0x000000},
            {"97;44", 0xFFFFFF, 0x2472C8},    {"48;5;21", 0x000000, 0x0000FF},
            {"38;5;244", 0x808080, 0xFFFFFF}, {"38;5;208", 0xFF8700, 0xFFFFFF},
            {"38;5;232", 0x080808, 0xFFFFFF}};
        QByteArray bytes;
        for (const auto &[sequence, text, ground] : rows)
            bytes += QByteArray("\x1b[") + sequence + 'm' + QByteArray(50, 'm') + "\x1b[0m\n";
        receive(m_terminal.get(), bytes);
        m_terminal->showSent("mmm\n", false, false);
        int number = 0;
        for (const auto &[sequence, text, ground] : rows) {
            QCOMPARE(row(m_terminal.get(), number).pixelColor(0, 0), QColor(ground));
            QCOMPARE(strongest(m_terminal.get(), number++).rgb(),
                     Contrast::readableOn(QColor(ground), QColor(text)).rgb());
        }
        for (int face = 1; face < 4; ++face)
            for (int other = 0; other < face; ++other)
                QVERIFY(row(m_terminal.get(), face) != row(m_terminal.get(), other));
        QTRY_COMPARE(strongest(m_terminal.get(), number).rgb(),
                     Contrast::readableOn(Qt::white, QColor(30, 130, 220)).rgb());
    }

    void showsMatchesAboveRules()
    {
        SharedRules::instance().store({ruleFor("mm", kRed, true)}, true);
        receive(m_terminal.get(), "mmmmmm\n");
        LineSearch search(m_terminal->received().lines());
        search.start(LineMatcher({"mmm"}));
        m_terminal->markMatches(search);
        const QRgb ground = row(m_terminal.get(), 0).pixel(4, 1);
        QVERIFY(QColor(ground) != QColor(Qt::white));
        const QColor text = strongest(m_terminal.get(), 0);
        QVERIFY(text.hue() == kRed.hue() && Contrast::ratio(text, QColor(ground)) >= 4.5);
        m_terminal->selectAll();
        QVERIFY(!colorsOf(m_terminal.get(), 0).contains(ground));
    }

    void switchesHardRulesOff()
    {
        SharedRules::instance().store({{{"(m+)+$", false, false, true}, 0xC80000, true, true}}, true);
        QSignalSpy told(m_terminal.get(), &QtTerminalWidget::ruleGaveUp);
        receive(m_terminal.get(), QByteArray(60, 'm') + '\n' + QByteArray(61, 'm') + "!\n" +
                                      QByteArray(62, 'm') + "!\n" + QByteArray(63, 'm') + "!\n");
        QCOMPARE(strongest(m_terminal.get(), 0), kRed);
        WAIT_EQUAL(told.count(), 1);
        QCOMPARE(strongest(m_terminal.get(), 0), QColor(Qt::black));
        RuleDialog dialog;
        const auto *table = dialog.findChild<QTableView *>();
        QVERIFY(table->model()->index(0, 4).data().toString().contains("停用"));
    }

    void editsRules()
    {
        SharedRules::instance().store({}, false);
        RuleDialog dialog;
        const auto press = [&](const char *name) { dialog.findChild<QAbstractButton *>(name)->click(); };
        auto *model = dialog.findChild<QTableView *>()->model();
        const QAbstractItemModelTester tester(model);
        const auto *state = dialog.findChild<QLabel *>("labelRuleState");
        press("btnCommonRules");
        const int common = commonColorRules().size();
        QCOMPARE(model->rowCount(), common);
        press("btnCommonRules");
        QCOMPARE(model->rowCount(), common);
        press("btnAddRule");
        auto *pattern = dialog.findChild<QLineEdit *>("editRulePattern");
        QTest::keyClicks(pattern, "a(b");
        QCOMPARE(model->index(common, 4).data().toString(), QString());
        press("checkRuleExpression");
        QVERIFY(model->index(common, 4).data().toString().contains("缺少右括号"));
        press("btnRuleUp");
        press("btnRuleDown");
        press("btnRuleUp");
        QCOMPARE(model->index(common - 1, 0).data().toString(), QString("a(b"));
        press("btnAddRule"); // stays empty, and is not stored

        const QString file = m_root->path() + "/rules.json";
        chooseFile(file);
        press("btnExportRules");
        QVERIFY(writeFile(m_root->path() + "/bad.json", contentOf(file).replace("\"#", "\"?")));
        chooseFile(m_root->path() + "/bad.json");
        press("btnImportRules");
        QCOMPARE(state->text(), QString("导入失败：第1条规则颜色有误"));
        QCOMPARE(model->rowCount(), common + 2);

        const QSignalSpy rejected(&dialog, &QDialog::rejected);
        press("btnCancel");
        QCOMPARE(rejected.count(), 1);
        QVERIFY(Settings::instance().colorRules->isEmpty());
        dialog.accept();
        QVERIFY(SharedRules::instance().areUsed());
        QCOMPARE(SharedRules::instance().rules().size(), common + 1);
        QCOMPARE(SharedRules::instance().rules().at(common - 1).pattern.text, QString("a(b"));

        RuleDialog next;
        chooseFile(file);
        next.findChild<QAbstractButton *>("btnImportRules")->click(); // has them all
        QCOMPARE(next.findChild<QTableView *>()->model()->rowCount(), common + 1);
    }

    // In the table and below it.
    void showsTheChosenRule()
    {
        SharedRules::instance().store({ruleFor("first", kRed, true), ruleFor("last", kBlue, false)}, true);
        RuleDialog dialog;
        auto *table = dialog.findChild<QTableView *>();
        QAbstractItemModel *model = table->model();
        const QAbstractItemModelTester tester(model);
        auto *pattern = dialog.findChild<QLineEdit *>("editRulePattern");
        auto *color = dialog.findChild<QLineEdit *>("editRuleColor");
        auto *range = dialog.findChild<QComboBox *>("comboRuleRange");
        const auto form = [&](int row) {
            table->selectRow(row);
            QString text = pattern->text() + ' ' + range->currentText() + ' ' + color->text();
            for (const char *box : {"checkRuleCase", "checkRuleWord", "checkRuleExpression"})
                text += dialog.findChild<QAbstractButton *>(box)->isChecked() ? " x" : " -";
            return text + dialog.findChild<QWidget *>("ruleColors")->accessibleName();
        };
        const QIcon sample = model->index(1, 3).data(Qt::DecorationRole).value<QIcon>();
        const QImage image = sample.pixmap(52, 18, QIcon::Selected).toImage();
        int drawn = 0;
        for (int i = 0; i < image.width() * image.height(); ++i)
            drawn += image.pixel(i % image.width(), i / image.width()) != image.pixel(0, 0) ? 1 : 0;
        QVERIFY(drawn > 20 && drawn < 500);
        QCOMPARE(image.pixelColor(0, 0), QColor(0x4b, 0x4b, 0x4b)); // the ground of the display
        QCOMPARE(form(1), QString("last 匹配的文字 #0000c8 x - -颜色 #ff4d4d"));
        QCOMPARE(form(0), QString("first 整行 #c80000 x - -颜色 #ff4d4d"));
        QTest::keyClick(range, Qt::Key_Down);
        pattern->setCursorPosition(1);
        color->selectAll();
        const QSignalSpy changes(model, &QAbstractItemModel::dataChanged);
        QTest::keyClicks(color, "#4d8dff");
        QCOMPARE(changes.last().at(1).toModelIndex().column(), 4);
        QVERIFY(pattern->cursorPosition() == 1 && // no text is set that is there
                dialog.findChild<QWidget *>("ruleColors")->accessibleName().endsWith("#4d8dff"));
        form(1);
        QCOMPARE(form(0), QString("first 匹配的文字 #4d8dff x - -颜色 #4d8dff"));
        QVERIFY(!table->tabKeyNavigation()); // the keyboard gets out
        dialog.setProperty("errorColor", QColor(Qt::red));
        QCOMPARE(model->index(0, 4).data(Qt::ForegroundRole), QVariant(QColor(Qt::red)));
        QVERIFY(!model->setData(model->index(0, 0), "edited in place", Qt::EditRole));
        QVERIFY(model->setData(model->index(0, 0), Qt::Unchecked, Qt::CheckStateRole));
        dialog.findChild<QAbstractButton *>("btnAddRule")->click();
        dialog.findChild<QAbstractButton *>("btnRemoveRule")->click();
        dialog.accept();
        const ColorRules stored = SharedRules::instance().rules();
        QVERIFY(table->currentIndex().row() == 1 && !stored.first().isOn && stored.last().isOn &&
                !stored.first().isForLine);
    }

    // There is nothing to use without rules: the menu then leads to them.
    void menuUsesRules()
    {
        SharedRules::instance().store({}, false);
        ViewMenu menu;
        ViewMenu other;
        QAction *use = actionOf(menu, "使用着色规则");
        for (const bool accepts : {false, true}) {
            QTimer::singleShot(0, this, [accepts] {
                auto *dialog = qobject_cast<RuleDialog *>(QApplication::activeModalWidget());
                QVERIFY(dialog);
                dialog->findChild<QAbstractButton *>("btnCommonRules")->click();
                accepts ? dialog->accept() : dialog->reject();
            });
            use->trigger();
            QCOMPARE(use->isChecked(), accepts);
        }
        use->trigger();
        QVERIFY(SharedRules::instance().rules().size() > 1 && !SharedRules::instance().areUsed());
        use->trigger();
        QVERIFY(actionOf(other, "使用着色规则")->isChecked());

        for (const char *text : {"打开后的时间（秒）", "显示发送的数据", "显示控制字符"})
            actionOf(menu, text)->trigger();
        menu.setSavable(true, false);
        QStringList seen;
        for (const QAction *action : menu.menu()->actions())
            seen += action->text().left(action->isSeparator() ? 0 : 7) + (action->isChecked() ? "+" : "") +
                    (action->isEnabled() ? "" : "-") + action->shortcut().toString().right(1);
        QCOMPARE(seen, QString("不显示行时间|行的到达时刻T|与上一行的间隔|打开后的时间（+|复制时带行时间|"
                               "保存文本时带行||显示发送的数据+D|解释ANSI转A|显示控制字符+K|按当前编码重新R||"
                               "使用着色规则+H|着色规则…|数值曲线G||保存选中内容…|保存筛选结果…-")
                           .split('|'));
        const ViewOptions options = other.options();
        QVERIFY(options.time == LineStamp::Time::SinceOpening && options.showsSent && options.text.symbols &&
                !options.text.sequences && !options.copiesStamps && !options.savesStamps);
    }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            m_painted += static_cast<QPaintEvent *>(event)->region();
        return QObject::eventFilter(watched, event);
    }

private:
    static QAction *actionOf(const ViewMenu &menu, const QString &text)
    {
        for (QAction *action : menu.menu()->actions())
            if (action->text() == text)
                return action;
        return nullptr;
    }
    void show(QtTerminalWidget *terminal, const QColor &ground)
    {
        terminal->selectColorBrush(ground);
        terminal->selectColorText(ground == Qt::white ? Qt::black : Qt::white);
        terminal->resize(600, 300);
        terminal->show();
        QVERIFY(QTest::qWaitForWindowExposed(terminal));
    }
    void receive(QtTerminalWidget *terminal, const QByteArray &bytes)
    {
        terminal->showReceived(bytes, QString(), false);
        while (terminal->queuedBytes() > 0)
            terminal->flushSlice();
    }
    // Of the view.
    QImage row(QtTerminalWidget *terminal, int number)
    {
        const int height = terminal->cursorRect().height();
        const QRect rows(4, 4 + number * height, 300, height);
        return terminal->viewport()->grab(rows).toImage();
    }
    QSet<QRgb> colorsOf(QtTerminalWidget *terminal, int number)
    {
        const QImage image = row(terminal, number);
        QSet<QRgb> colors;
        for (int i = 0; i < image.width() * image.height(); ++i)
            colors.insert(image.pixel(i % image.width(), i / image.width()));
        return colors;
    }
    // The color that differs most from the ground.
    QColor strongest(QtTerminalWidget *terminal, int number)
    {
        const QColor ground = row(terminal, number).pixelColor(0, 0);
        QColor found = ground;
        for (const QRgb color : colorsOf(terminal, number))
            if (Contrast::ratio(QColor(color), ground) > Contrast::ratio(found, ground))
                found = QColor(color);
        return found;
    }

    std::unique_ptr<FreshFolder> m_root;
    std::unique_ptr<QtTerminalWidget> m_terminal;
    QRegion m_painted;
};

QTEST_MAIN(TestRuleMarks)
#include "test_rulemarks.moc"
