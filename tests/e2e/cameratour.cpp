#include "imageviewer.h"
#include "tours.h"
#include "userhand.h"

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
