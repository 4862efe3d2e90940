#include "datamanagerwidget.h"
#include "imageviewer.h"
#include "tours.h"
#include "userhand.h"

#include <QAbstractItemModel>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTest>

namespace {

constexpr int kCamera = 1; // the tab

// A color bar in the viewer as the screen has it; bars are as wide as an
// eighth of the picture, which is centered at that place.
QColor onScreen(ImageViewer *viewer, int centerX, int pictureWidth, int bar)
{
    const int x = centerX - pictureWidth / 2 + pictureWidth * (2 * bar + 1) / 16;
    return viewer->grab().toImage().pixelColor(x, viewer->height() / 2);
}

} // namespace

void CameraTour::showsTwoCameras()
{
    QVERIFY(stage().showTool(kCamera));
    const QString port = QString::number(Stage::freePort());
    QVERIFY(typeInto("editCameraPort", port));
    QVERIFY(click("btnCameraOpen"));
    QVERIFY(stage().waitForNotice(QString("TCP服务监听[端口:%1]已启动!!").arg(port), Notice::Information));
    QVERIFY(choose("comboDeviceCount", "2"));
    const QStringList common{"--act",    "camera", "--test-pattern", "--width", "160",
                             "--height", "120",    "--net-port",     port};
    BoardProcess first;
    BoardProcess second;
    QVERIFY(first.startOnNetwork("tcp-client", common + QStringList{"--format", "4"}));
    QVERIFY(
        second.startOnNetwork("tcp-client", common + QStringList{"--format", "5", "--first-device", "1"}));
    auto *viewer = find<ImageViewer>("imageViewer");
    const int width = viewer->width();
    // Bars: white, yellow, cyan, green, magenta, red, blue, black; RGB565 has fewer shades.
    WAIT_EQUAL(onScreen(viewer, width / 4, 160, 1), QColor(0xf8, 0xfc, 0));
    WAIT_EQUAL(onScreen(viewer, width / 4, 160, 6), QColor(0, 0, 0xf8));
    WAIT_EQUAL(onScreen(viewer, width * 3 / 4, 160, 1), QColor(0xff, 0xff, 0));
    WAIT_EQUAL(onScreen(viewer, width * 3 / 4, 160, 5), QColor(0xff, 0, 0));
}

void CameraTour::readsRegisters()
{
    BoardProcess board("COM8", stage().portsFolder());
    QVERIFY(stage().plugIn(board, {"--mode", "camera", "--width", "64", "--height", "48", "--test-pattern"}));
    QVERIFY(stage().showTool(kCamera));
    QVERIFY(choose("comboCameraProtocol", "串口"));
    QVERIFY(choose("comboCameraSerialPort", "COM8 虚拟串口"));
    QVERIFY(click("btnCameraOpen"));
    auto *viewer = find<ImageViewer>("imageViewer");
    WAIT_EQUAL(onScreen(viewer, viewer->width() / 2, 64, 5), QColor(0xf8, 0, 0));
    QVERIFY(typeInto("editRegisterAddress", "3008"));
    QVERIFY(click("btnReadRegister"));
    WAIT_EQUAL(find<QLineEdit>("editRegisterValue")->text(), QString("38")); // 7 x 3008, its lowest byte

    QVERIFY(click("btnReadTable"));
    auto *table = stage().window().findChild<DataManagerWidget *>();
    WAIT_FOR(table->isActiveWindow());
    auto *view = table->findChild<QTableView *>();
    const QAbstractItemModel *model = view->model();
    const QStringList addresses{"3009", "4000"}; // the board has no second one
    for (int row = 0; row < addresses.size(); ++row) {
        const QPoint place = view->visualRect(model->index(row, 1)).center();
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, place);
        QVERIFY(UserHand::type(addresses.at(row) + '\n'));
        WAIT_EQUAL(model->index(row, 1).data().toString(), addresses.at(row));
    }
    QVERIFY(UserHand::click(table->findChild<QPushButton *>("btnConfirm")));
    WAIT_EQUAL(table->findChild<QLabel *>("labelRegisterProgress")->text(),
               QString("已完成 2/2，无应答 0，错误 1"));
    QCOMPARE(model->index(0, 2).data().toString(), QString("3F"));
    QVERIFY(UserHand::click(table->findChild<QPushButton *>("btnCancel")));
}
