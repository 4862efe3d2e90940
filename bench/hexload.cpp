// Opens a file in the page of the binary editor and prints what a user waits
// for: until it is drawn, an insertion in the middle and its undo, a search to
// the end, a page scrolled, saving; and the memory beyond the file's size.
//
//   hexload FILE [OTHER]  the file is changed; its last bytes must be "pattern!";
//                         it is compared with the other one before

#include "apppaths.h"
#include "hexcomparepanel.h"
#include "hexeditwidget.h"
#include "processfigures.h"
#include "qhexedit.h"
#include "startup.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTemporaryDir>
#include <QWindow>

#include <algorithm>
#include <cstdio>
#include <ctime>

namespace {

double milliseconds(const QElapsedTimer &clock)
{
    return static_cast<double>(clock.nsecsElapsed()) / 1e6;
}

void press(QWidget *widget, int key, const QString &text = QString())
{
    QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, text);
    QApplication::sendEvent(widget, &event);
}

// Until the condition holds; the longest time between two turns of the event
// loop is the longest pause that a user felt.
template <class Condition> double runUntil(Condition condition)
{
    double longest = 0;
    while (!condition()) {
        QElapsedTimer turn;
        turn.start();
        QCoreApplication::processEvents();
        longest = std::max(longest, milliseconds(turn));
    }
    return longest;
}

} // namespace

int main(int argc, char **argv)
{
    Startup::setAttributes();
    QApplication application(argc, argv);
    const QString name = QCoreApplication::arguments().value(1);
    const QTemporaryDir root;
    AppPaths::setRoot(root.path());
    Startup::prepare(application);
    HexEditWidget page;
    page.resize(1000, 600);
    page.show();
    runUntil([&page] { return page.windowHandle()->isExposed(); });
    auto *edit = page.findChild<QHexEdit *>();
    const double fileMegabytes = static_cast<double>(QFileInfo(name).size()) / 1048576.0;
    const double before = ProcessFigures::residentMegabytes();

    QElapsedTimer clock;
    clock.start();
    page.openFile(name);
    edit->viewport()->repaint();
    const double drawn = milliseconds(clock); // with the first slice, which is read at once
    auto *stop = page.findChild<QPushButton *>(QStringLiteral("btnStopWork"));
    double pause = std::max(drawn, runUntil([&] { return stop->isHidden(); }));
    edit->viewport()->repaint();
    const double opened = milliseconds(clock);
    const double resident = ProcessFigures::residentMegabytes();
    std::printf("%6.0f MB: drawn after %.0f ms, all read after %.0f ms (longest pause %.0f), "
                "memory %.0f MB = %.3f x file + %.0f MB\n",
                fileMegabytes, drawn, opened, pause, resident, (resident - before) / fileMegabytes, before);

    edit->setOverwrite(false);
    edit->goTo(edit->size() / 2);
    clock.start();
    press(edit, Qt::Key_5, QStringLiteral("5"));
    edit->viewport()->repaint();
    const double inserted = milliseconds(clock);
    clock.start();
    edit->undo();
    edit->viewport()->repaint();
    const double undone = milliseconds(clock);
    edit->goTo(0);
    double worstPage = 0;
    for (int i = 0; i < 200; ++i) {
        clock.start();
        press(edit, Qt::Key_PageDown);
        edit->viewport()->repaint();
        worstPage = std::max(worstPage, milliseconds(clock));
    }
    std::printf("           insert %.2f ms, undo %.2f ms, worst of 200 pages %.2f ms\n", inserted, undone,
                worstPage);

    edit->goTo(0);
    page.findChild<QComboBox *>(QStringLiteral("comboFindKind"))->setCurrentIndex(1);
    page.findChild<QLineEdit *>(QStringLiteral("editFind"))->setText(QStringLiteral("pattern!"));
    clock.start();
    page.findChild<QPushButton *>(QStringLiteral("btnFindNext"))->click();
    pause = milliseconds(clock);
    pause = std::max(pause, runUntil([&] { return edit->selectionLength() > 0; }));
    std::printf("           search %.0f ms (longest pause %.0f), found at %s\n", milliseconds(clock), pause,
                edit->selectionBegin() == edit->size() - 8 ? "the end" : "A WRONG PLACE");

    page.findChild<QAction *>(QStringLiteral("actionHexStrings"))->trigger();
    auto *strings = page.findChild<QTableView *>(QStringLiteral("hexStringsTable"))->model();
    clock.start();
    page.findChild<QPushButton *>(QStringLiteral("btnListStrings"))->click();
    pause = milliseconds(clock);
    pause = std::max(pause, runUntil([&] { return !edit->task()->isRunning(); }));
    std::printf("           %d texts %.0f ms (longest pause %.0f)\n", strings->rowCount(),
                milliseconds(clock), pause);
    const QString other = QCoreApplication::arguments().value(2);
    if (!other.isEmpty()) {
        page.findChild<QAction *>(QStringLiteral("actionHexCompare"))->trigger();
        auto *panel = page.findChild<HexComparePanel *>();
        const auto *result = page.findChild<QLabel *>(QStringLiteral("labelCompare"));
        for (const bool isAligned : {false, true}) {
            page.findChild<QPushButton *>(QStringLiteral("btnCompareAlign"))->setChecked(isAligned);
            clock.start();
            const std::clock_t cpu = std::clock();
            panel->compareWithFile(other);
            pause = milliseconds(clock);
            pause =
                std::max(pause, runUntil([&] { return !result->text().contains(QStringLiteral("正在")); }));
            std::printf("           compare%s %.0f ms, processor %.0f ms (longest pause %.0f): %s\n",
                        isAligned ? " aligned" : "", milliseconds(clock),
                        1e3 * double(std::clock() - cpu) / CLOCKS_PER_SEC, pause, qPrintable(result->text()));
        }
        panel->close();
    }

    press(edit, Qt::Key_5, QStringLiteral("5"));
    clock.start();
    page.sltToolBtnsClicked(HexEditWidget::SaveFile);
    pause = milliseconds(clock);
    pause = std::max(pause, runUntil([&] { return !edit->task()->isRunning(); }));
    std::printf("           save %.0f ms, %s (longest pause %.0f)\n", milliseconds(clock),
                edit->isModified() ? "FAILED" : "saved", pause);
    return 0;
}
