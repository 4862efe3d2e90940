// Runs the real window with its camera page, takes a board in another process for its
// registers, and works with a table of 10,000 rows. Prints the longest time for which
// each step blocked the user-interface thread. The port goes to standard output first:
// "port 4711"; the board connects as a client.
//
//   registerload [--rows N]

#include "cameradebugwidget.h"
#include "datamanagerwidget.h"
#include "dialoganswers.h"
#include "heartbeat.h"
#include "loadrun.h"

#include <QAction>
#include <QElapsedTimer>
#include <QFile>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTemporaryDir>

#include <cstdio>
#include <functional>

namespace {

Heartbeat *heartbeat = nullptr;

void wait(const std::function<bool()> &isDone, int minMs)
{
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < minMs || !isDone())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

void measure(
    const char *what, const std::function<void()> &act,
    const std::function<bool()> &isDone = [] { return true; })
{
    wait([] { return true; }, 300);
    heartbeat->takeWorst();
    QElapsedTimer clock;
    clock.start();
    QTimer::singleShot(0, qApp, act); // between two beats, as an event of the user's
    wait(isDone, 500);
    std::printf("%-28s blocked %6.1f ms at worst, over after %lld ms\n", what, heartbeat->takeWorst(),
                clock.elapsed());
    std::fflush(stdout);
}

} // namespace

int main(int argc, char *argv[])
{
    LoadRun run(argc, argv, {"rows"});
    const int rows = run.isSet("rows") ? int(run.number("rows")) : 10000;
    run.showPage(CameraDebugWidget::pageIndex);
    auto *page = run.window().findChild<CameraDebugWidget *>();
    const quint16 port = LoadRun::freePort();
    page->findChild<QLineEdit *>(QStringLiteral("editCameraPort"))->setText(QString::number(port));
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("table.csv")));
    if (!file.open(QIODevice::WriteOnly))
        return 1;
    for (int row = 0; row < rows; ++row)
        file.write(QStringLiteral("%1,%2,%3,曝光%4\n")
                       .arg(row)
                       .arg(0x3000 + row % 256, 0, 16)
                       .arg(row * 7 % 256, 2, 16, QLatin1Char('0'))
                       .arg(row % 37)
                       .toUtf8());
    file.close();
    DialogAnswers::instance().fileNames = [&file](auto...) { return QStringList(file.fileName()); };
    DialogAnswers::instance().message = [](auto...) { return 1; };

    Heartbeat beats;
    heartbeat = &beats;
    beats.start();
    wait([] { return true; }, 1500);
    page->SltOpenLink();
    std::printf("port %d\n", int(port));
    std::fflush(stdout);
    wait([page] { return page->frames() > 0; }, 0);

    const auto click = [page](const char *name) {
        page->findChild<QPushButton *>(QLatin1String(name))->click();
    };
    measure("opening the dialog", [click] { click("btnReadTable"); });
    auto *dialog = page->findChild<DataManagerWidget *>();
    measure("closing and opening it", [=] {
        dialog->hide();
        click("btnReadTable");
    });
    auto *view = dialog->findChild<QTableView *>();
    auto *progress = dialog->findChild<QLabel *>(QStringLiteral("labelRegisterProgress"));
    const auto press = [dialog](const char *name) {
        dialog->findChild<QPushButton *>(QLatin1String(name))->click();
    };
    const auto trigger = [dialog](const char *name) {
        dialog->findChild<QAction *>(QLatin1String(name))->trigger();
    };
    measure(
        "importing", [press] { press("btnImport"); },
        [progress] { return progress->text().startsWith(QStringLiteral("读取")); });
    auto *header = view->horizontalHeader();
    measure("sorting by value", [header] { emit header->sectionClicked(2); });
    measure("sorting by description", [header] { emit header->sectionClicked(3); });
    trigger("actionFindRegister");
    auto *search = dialog->findChild<QLineEdit *>(QStringLiteral("editFindRegister"));
    for (const char *text : {"3", "30", "30f", "", "曝光1"})
        measure(text[0] ? text : "no search", [=] { search->setText(QString::fromUtf8(text)); });
    measure("values in binary", [trigger] { trigger("actionBase2"); });
    const auto isOver = [progress] { return progress->text().startsWith(QStringLiteral("已")); };
    measure(
        "reading, sorted", [press] { press("btnConfirm"); }, isOver);
    std::printf("  %s\n", qPrintable(progress->text()));
    search->clear();
    for (int i = 0; i < 2; ++i)
        emit header->sectionClicked(3);
    progress->clear();
    measure(
        "comparing, by pages", [trigger] { trigger("actionCompareRegisters"); }, isOver);
    std::printf("  %s\n", qPrintable(progress->text()));
    measure("differences only", [trigger] { trigger("actionDifferencesOnly"); });
    trigger("actionDifferencesOnly");
    measure("turning to the last page", [press] { press("btnLastPage"); });
    measure("selecting all and copying", [=] {
        view->selectAll();
        trigger("actionCopyRegisters");
    });
    measure("saving the report", [trigger] { trigger("actionSaveReport"); });
    measure("exporting", [press] { press("btnExport"); });
    measure("clearing", [press] { press("btnClear"); });
    return 0;
}
