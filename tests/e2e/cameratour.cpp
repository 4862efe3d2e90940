#include "datamanagerwidget.h"
#include "imageviewer.h"
#include "stage.h"
#include "tours.h"
#include "userhand.h"

#include <QAbstractItemModel>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QTableView>
#include <QTcpServer>
#include <QTest>

namespace {

constexpr int kCamera = 1; // the tab

// A colour bar in the viewer as the screen has it; bars are as wide as an
// eighth of the picture, which is centred at that place.
QColor onScreen(ImageViewer *viewer, int centreX, int pictureWidth, int bar)
{
    const int x = centreX - pictureWidth / 2 + pictureWidth * (2 * bar + 1) / 16;
    return viewer->grab().toImage().pixelColor(x, viewer->height() / 2);
}

// The panel is longer than the window.
bool clickInPanel(Stage &stage, const char *name)
{
    auto *button = stage.find<QPushButton>(name);
    stage.find<QScrollArea>("cameraConfigPanel")->ensureWidgetVisible(button);
    return UserHand::click(button);
}

bool typeInPanel(Stage &stage, const char *name, const QString &text)
{
    auto *field = stage.find<QLineEdit>(name);
    stage.find<QScrollArea>("cameraConfigPanel")->ensureWidgetVisible(field);
    return UserHand::typeInto(field, text);
}

} // namespace

void CameraTour::showsTwoCameras()
{
    QVERIFY(stage().showTool(kCamera));
    QTcpServer probe;
    probe.listen();
    const QString port = QString::number(probe.serverPort());
    probe.close();
    QVERIFY(typeInPanel(stage(), "editCameraPort", port));
    QVERIFY(clickInPanel(stage(), "btnCameraOpen"));
    QVERIFY(
        stage().waitForNotice(QStringLiteral("TCP服务监听[端口:%1]已启动!!").arg(port), Notice::Information));
    QVERIFY(UserHand::choose(stage().find<QComboBox>("comboDeviceCount"), QStringLiteral("2")));

    const QStringList common{"--act",    "camera", "--test-pattern", "--width", "160",
                             "--height", "120",    "--net-port",     port};
    BoardProcess first;
    BoardProcess second;
    QVERIFY(first.startOnNetwork("tcp-client", common + QStringList{"--format", "4"}));
    QVERIFY(
        second.startOnNetwork("tcp-client", common + QStringList{"--format", "5", "--first-device", "1"}));
    auto *viewer = stage().find<ImageViewer>("imageViewer");
    const int width = viewer->width();
    // Bars: white, yellow, cyan, green, magenta, red, blue, black; RGB565 has fewer shades.
    WAIT_EQUAL(onScreen(viewer, width / 4, 160, 1), QColor(0xf8, 0xfc, 0));
    WAIT_EQUAL(onScreen(viewer, width / 4, 160, 6), QColor(0, 0, 0xf8));
    WAIT_EQUAL(onScreen(viewer, width * 3 / 4, 160, 1), QColor(0xff, 0xff, 0));
    WAIT_EQUAL(onScreen(viewer, width * 3 / 4, 160, 5), QColor(0xff, 0, 0));
    WAIT_FOR(stage().receivedShown() > 4 * 160 * 120);
}

void CameraTour::setsRegisters()
{
    BoardProcess board(QStringLiteral("COM8"), stage().portsFolder());
    QVERIFY(stage().plugIn(board, {"--mode", "camera", "--width", "64", "--height", "48", "--test-pattern"}));
    QVERIFY(stage().showTool(kCamera));
    QVERIFY(UserHand::choose(stage().find<QComboBox>("comboCameraProtocol"), QStringLiteral("串口")));
    auto *ports = stage().find<QComboBox>("comboCameraSerialPort");
    WAIT_FOR(ports->count() > 0);
    QVERIFY(UserHand::choose(ports, ports->itemText(0)));
    QVERIFY(clickInPanel(stage(), "btnCameraOpen"));
    auto *viewer = stage().find<ImageViewer>("imageViewer");
    WAIT_EQUAL(onScreen(viewer, viewer->width() / 2, 64, 5), QColor(0xf8, 0, 0));

    auto *value = stage().find<QLineEdit>("editRegisterValue");
    QVERIFY(typeInPanel(stage(), "editRegisterAddress", QStringLiteral("3008")));
    QVERIFY(clickInPanel(stage(), "btnReadRegister"));
    WAIT_EQUAL(value->text(), QStringLiteral("38")); // 7 x 3008, its lowest byte
    QVERIFY(typeInPanel(stage(), "editRegisterValue", QStringLiteral("A5")));
    QVERIFY(clickInPanel(stage(), "btnWriteRegister"));
    QVERIFY(typeInPanel(stage(), "editRegisterValue", QStringLiteral("00")));
    QVERIFY(clickInPanel(stage(), "btnReadRegister"));
    WAIT_EQUAL(value->text(), QStringLiteral("A5"));

    QVERIFY(clickInPanel(stage(), "btnReadTable"));
    auto *table = stage().window().findChild<DataManagerWidget *>();
    WAIT_FOR(table->isActiveWindow());
    auto *view = table->findChild<QTableView *>();
    const QAbstractItemModel *model = view->model();
    const QStringList addresses{"3008", "3009", "4000"};
    for (int row = 0; row < addresses.size(); ++row) {
        const QPoint place = view->visualRect(model->index(row, 1)).center();
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, place);
        QVERIFY(UserHand::type(addresses.at(row)));
        QVERIFY(UserHand::press(Qt::Key_Return));
        WAIT_EQUAL(model->index(row, 1).data().toString(), addresses.at(row));
    }
    QVERIFY(UserHand::click(table->findChild<QPushButton *>(QStringLiteral("btnConfirm"))));
    WAIT_EQUAL(table->findChild<QLabel *>(QStringLiteral("labelRegisterProgress"))->text(),
               QStringLiteral("已完成 3/3，无应答 0，错误 1"));
    QCOMPARE(model->index(0, 2).data().toString(), QStringLiteral("A5"));
    QCOMPARE(model->index(1, 2).data().toString(), QStringLiteral("3F"));
    QVERIFY(UserHand::click(table->findChild<QPushButton *>(QStringLiteral("btnCancel"))));
}
