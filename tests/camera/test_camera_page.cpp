// The camera page fed with bytes.

#include "cameraframe.h"
#include "camerapagetest.h"
#include "camerastatusrow.h"
#include "dialoganswers.h"
#include "frameshow.h"
#include "linksession.h"
#include "repaints.h"
#include "seriallink.h"
#include "stateindicator.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QLabel>
#include <QSpinBox>

class TestCameraPage : public CameraPageTest
{
    Q_OBJECT

private slots:
    void toleratesChecksums()
    {
        m_page->SltRecvImageData("b", "ORVN" + QByteArray::fromHex("000f000000010501000100"));
        const QByteArray red = "ORVN" + QByteArray::fromHex("000f00000002ff0000bad0");
        child<QCheckBox>("checkCrc16")->setChecked(true);
        m_page->SltRecvImageData("b", red);
        QCOMPARE(m_page->frames(), qint64(0));
        QVERIFY(child<QLabel>("labelImageError")->isVisible());
        child<QCheckBox>("checkCrc16")->setChecked(false);
        m_page->SltRecvImageData("b", red);
        QCOMPARE(m_page->frames(), qint64(1));
        QTRY_VERIFY(hasPicture(0));
        QCOMPARE(shown(0, 0, 0), qRgb(255, 0, 0));
        // A loss is told once, and again behind a packet.
        const auto error = [this] { return child<QLabel>("labelImageError")->toolTip(); };
        m_page->SltRecvImageData("b", "ORVN" + QByteArray::fromHex("00ffffffff02") + "ab");
        QCOMPARE(error(), QStringLiteral("数据包长度异常，已丢弃"));
        m_page->SltRecvImageData("b", red);
        m_page->SltRecvImageData("b", "this is no packet");
        m_page->SltRecvImageData("b", "neither is this");
        QCOMPARE(error(), QStringLiteral("无法识别的数据，已丢弃"));
        QCOMPARE(child<QLabel>("labelImageError")->text(), QStringLiteral("数据错误: 5"));
        const QSignalSpy refreshes(m_page.get(), &CameraDebugWidget::signalRefresCounts);
        emit m_page->findChild<LinkSession *>()->handedOver(3);
        m_page->clearCounts();
        QVERIFY(child<QLabel>("labelImageError")->isHidden() && m_page->counts() == QStringList({"0", "0"}));
        QCOMPARE(refreshes.count(), 2);
        m_page->SltRecvImageData("b", red);
        QCOMPARE(child<QLabel>("labelImageError")->text(), QStringLiteral("数据错误: 1"));
    }

    // Whatever was announced, but for raw JPEGs; the sides are still those announced.
    void readsAsChosen()
    {
        const QByteArray frame = CameraFrame::build(0, CameraFrame::ImageData, QByteArray::fromHex("ff0000"));
        m_page->SltRecvImageData("b", "ORVN" + QByteArray::fromHex("000f000000010501000100"));
        m_page->SltRecvImageData("b", frame);
        QTRY_VERIFY(hasPicture(0) && shown(0, 0, 0) == qRgb(255, 0, 0));
        child<QAction>("actionPixelFormat7")->trigger();
        m_page->SltRecvImageData("b", frame);
        QTRY_COMPARE(shown(0, 0, 0), qRgb(0, 0, 255));
        child<QAction>("actionFitPicture")->trigger();
        const auto tip = [this] {
            auto *viewer = child<ImageViewer>("imageViewer");
            return viewer->pixelText(viewer->rect().center());
        };
        QVERIFY(tip().endsWith(QStringLiteral("B 255　原始 FF 00 00")));
        child<QAction>("actionPixelFormat9")->trigger(); // PNG
        m_page->SltRecvImageData("b", frame);
        QTRY_COMPARE(m_page->frameShow().unusable(), qint64(1));
        child<QCheckBox>("checkJpegData")->setChecked(true);
        m_page->SltRecvImageData("b", jpegFile(40, Qt::green));
        QTRY_COMPARE(child<ImageViewer>("imageViewer")->image(0).size(), QSize(40, 40));
        QVERIFY(tip().startsWith("x ") && !tip().contains(QStringLiteral("原始")));
        m_page.reset();
        Settings::instance() = Settings();
        Settings::load(); // as the next start does
        m_page = std::make_unique<CameraDebugWidget>();
        QVERIFY(child<QAction>("actionPixelFormat9")->isChecked());
        child<QAction>("actionPixelFormat0")->trigger();
    }

    // The line hands over byte after byte; two announcements have to arrive whole.
    void gathersFromASlowLine()
    {
        choose(Serial);
        click("btnCameraOpen");
        QCOMPARE(lastNotice(), QStringLiteral("当前系统未检测到任何串口，请重试!!!"));
        m_page->SltSerialportChanged({"COM3 board"});
        child<QComboBox>("comboCameraBaudRate")->setEditText("0");
        click("btnCameraOpen");
        QCOMPARE(lastNotice(), QStringLiteral("波特率为空或不是正整数，串口未打开！"));
        QVERIFY(child<StateIndicator>("stateIndicator")->toolTip().contains(QStringLiteral("波特率为空")));
        child<QComboBox>("comboCameraBaudRate")->setEditText("9600");
        click("btnCameraOpen");
        QCOMPARE(m_notices->at(m_notices->size() - 2).at(0).toString(),
                 QStringLiteral("串口[COM3]打开失败!!!"));
        auto *port = m_page->findChild<SerialLink *>();
        emit port->received(QByteArray(256, 'x'), 0, {}); // enough not to wait for a pause
        QCOMPARE(m_page->counts().at(1), QString("256"));
        const QByteArray bytes = "ORVN" + QByteArray::fromHex("0111000000010502000300a552") + "ORVN" +
                                 QByteArray::fromHex("00110000000105040005000000");
        for (const char byte : bytes)
            emit port->received(QByteArray(1, byte), 0, {});
        emit port->failed("of the port");
        QCOMPARE(lastNotice(), QString("of the port"));
        m_notices->clear();
        QTRY_COMPARE(child<QSpinBox>("spinImageHeight")->value(), 5);
        QCOMPARE(m_notices->at(0).at(0).toString(),
                 QStringLiteral("设备[2]修改图像格式[RGB888]成功: 宽度: 2像素,高度：3像素."));
        child<QComboBox>("comboCameraDevice")->setCurrentIndex(1);
        QCOMPARE(child<QSpinBox>("spinImageWidth")->value(), 2);
        QCOMPARE(child<QSpinBox>("spinImageHeight")->value(), 3);
        auto *format = child<QComboBox>("comboImageFormat");
        QCOMPARE(format->currentText(), QStringLiteral("RGB888"));
        QTest::keyClick(format, Qt::Key_Home);
        child<QSpinBox>("spinImageHeight")->setValue(7);
        child<QComboBox>("comboCameraDevice")->setCurrentIndex(0);
        QCOMPARE(format->currentText(), QStringLiteral("RGB888"));
        child<QComboBox>("comboCameraDevice")->setCurrentIndex(1);
        QCOMPARE(format->currentIndex(), 0);
        QCOMPARE(child<QSpinBox>("spinImageHeight")->value(), 7);
    }

    void showsRates()
    {
        CameraStatusRow row;
        QString seen;
        for (const double rate : {999., 999949., 2.5e6}) {
            row.showRates(29.97, rate);
            seen += row.findChild<QLabel *>("labelDataRate")->text().mid(5);
        }
        QCOMPARE(seen, QStringLiteral(" 999 B/s 999.9 KB/s 2.50 MB/s"));
    }

    // Joined in the middle of a frame, without a pause: dark for a second, then one
    // notice, and what was dropped is counted.
    void resynchronizes()
    {
        const QByteArray frame = "ORVN" + QByteArray::fromHex("001000000002") + "1234cc";
        const QByteArray piece = (frame.mid(3) + frame.left(3)).repeated(100);
        QTRY_VERIFY_WITH_TIMEOUT((m_page->SltRecvImageData("a", piece), m_page->frames() > 0), 20000);
        m_page->SltRecvImageData("a", piece);
        QCOMPARE(m_notices->size(), 1);
        QCOMPARE(lastNotice(), QStringLiteral("图像数据失步，已重新同步"));
        m_page->SltCalculationRate();
        QVERIFY(!child<QLabel>("labelSkipped")->toolTip().contains(QStringLiteral("数据：0 字节")));
        QCOMPARE(child<QLabel>("labelImageError")->toolTip(), QStringLiteral("设备[1]的图像数据校验错误"));
        m_page->clearCounts();
        QVERIFY(child<QLabel>("labelSkipped")->toolTip().contains(QStringLiteral("数据：0 字节")));
    }

    void showsOnlyTheNewest()
    {
        child<QSpinBox>("spinImageWidth")->setValue(1);
        child<QSpinBox>("spinImageHeight")->setValue(1);
        const QByteArray frame = "ORVN" + QByteArray::fromHex("00100000000200001f00") + "cc";
        m_page->SltRecvImageData("a", frame.left(12)); // not completed
        m_page->SltRecvImageData("a", frame.repeated(50));
        QCOMPARE(m_page->frames(), qint64(50));
        QTRY_COMPARE(m_page->frameShow().shown(), qint64(1));
        QTRY_COMPARE_WITH_TIMEOUT(child<QLabel>("labelSkipped")->text(), QStringLiteral("未显示: 50"), 20000);
        QCOMPARE(child<QLabel>("labelFrameNumber")->text(), QStringLiteral("帧编号: 50"));
        m_page->clearCounts();
        QVERIFY(child<QLabel>("labelFrameNumber")->text() == QStringLiteral("帧编号: 0") &&
                child<QLabel>("labelSkipped")->isHidden());
        m_page->SltCalculationRate(); // no frame since
        QCOMPARE(child<QLabel>("labelFrameRate")->text(), QStringLiteral("接收帧率: 0.0 FPS"));
        QCOMPARE(child<QLabel>("labelDataRate")->text(), QStringLiteral("接收速率: 0 B/s"));
    }

    void takesRawJpegs()
    {
        child<QCheckBox>("checkJpegData")->setChecked(true);
        const QByteArray file = jpegFile(40, Qt::green);
        m_page->SltRecvImageData("a", "noise" + file + file.left(50));
        m_page->SltRecvImageData("a", file.mid(50));
        QCOMPARE(m_page->frames(), qint64(2));
        QTRY_VERIFY(hasPicture(0));
        QCOMPARE(child<ImageViewer>("imageViewer")->image(0).size(), QSize(40, 40));
        QVERIFY(child<QLabel>("labelImageError")->isHidden());
        // Half a picture is forgotten with the mode.
        m_page->SltRecvImageData("a", file.left(50));
        child<QCheckBox>("checkJpegData")->setChecked(false);
        child<QCheckBox>("checkJpegData")->setChecked(true);
        m_page->SltRecvImageData("a", file.mid(50) + file);
        QCOMPARE(m_page->frames(), qint64(3));
        QTRY_COMPARE(m_page->frameShow().shown() + m_page->frameShow().skipped(), qint64(3));
    }

    void paintsAgain()
    {
        ImageViewer viewer;
        viewer.resize(400, 300);
        viewer.show();
        QVERIFY(repaints(&viewer, [&] { viewer.setDisplayCount(2); }));
        QVERIFY(repaints(&viewer, [&] { viewer.setHint("below"); }));
        QVERIFY(repaints(&viewer, [&] { viewer.setImage(0, QPixmap(5, 5)); }));
    }

    void remembersItsFields()
    {
        for (const char *box : {"checkJpegData", "checkCrc16", "checkBigEndian"})
            click(box);
        child<QComboBox>("comboDeviceCount")->setCurrentIndex(1);
        child<QSpinBox>("spinRegId")->setValue(7);
        for (const char *edit : {"editRegisterAddress", "editRegisterValue"}) {
            child<QLineEdit>(edit)->setText("3A");
            emit child<QLineEdit>(edit)->editingFinished();
        }
        m_page.reset();
        Settings::instance() = Settings();
        Settings::load(); // as the next start does
        m_page = std::make_unique<CameraDebugWidget>();
        for (const char *box : {"checkJpegData", "checkCrc16", "checkBigEndian"})
            QVERIFY2(child<QAbstractButton>(box)->isChecked(), box);
        QCOMPARE(child<QComboBox>("comboDeviceCount")->currentIndex(), 1);
        QCOMPARE(child<QSpinBox>("spinRegId")->value(), 7);
        for (const char *edit : {"editRegisterAddress", "editRegisterValue"})
            QCOMPARE(child<QLineEdit>(edit)->text(), QStringLiteral("3A"));
    }

    void savesAndCopies()
    {
        click("btnSaveImage");
        QCOMPARE(lastNotice(), QStringLiteral("还没有图像，无法保存！"));
        click("btnCopyImage");
        QCOMPARE(lastNotice(), QStringLiteral("还没有图像，无法复制！"));
        QPixmap picture(20, 10);
        picture.fill(Qt::blue);
        child<ImageViewer>("imageViewer")->setImage(0, picture);
        picture.fill(Qt::red);
        child<ImageViewer>("imageViewer")->setImage(1, picture);
        for (const char *name : {"a.png", "a.jpg"}) {
            const QString file = m_root->filePath(QLatin1String(name));
            DialogAnswers::instance().fileNames = [file](auto...) { return QStringList{file}; };
            click("btnSaveImage");
            const QColor saved = QImage(file).pixelColor(5, 5);
            QVERIFY(saved.blue() > 250 && saved.red() < 5 &&
                    lastNotice().startsWith(QStringLiteral("图像已保存：")));
            QCOMPARE(QImage(file).size(), QSize(20, 10));
        }
        const QString nowhere = m_root->filePath("a.png/below.png");
        DialogAnswers::instance().fileNames = [nowhere](auto...) { return QStringList{nowhere}; };
        QString told;
        DialogAnswers::instance().message = [&told](auto, auto text, auto) { return told = text, 1; };
        click("btnSaveImage");
        QVERIFY(told == QStringLiteral("文件保存失败!") &&
                lastNotice().startsWith(nowhere + QStringLiteral(" 保存失败：")) &&
                !lastNotice().endsWith("："));
        child<QComboBox>("comboDeviceCount")->setCurrentIndex(1);
        child<QComboBox>("comboPicture")->setCurrentIndex(1);
        const QImage page = child<ImageViewer>("imageViewer")->grab().toImage();
        const int y = page.height() / 2;
        QVERIFY(page.pixelColor(page.width() / 4, y) == Qt::blue &&
                page.pixelColor(page.width() * 3 / 4, y) == Qt::red);
        picture.fill(Qt::blue);
        child<ImageViewer>("imageViewer")
            ->setImage(0, picture.scaled(page.width(), 10)); // wider than its half
        const QImage halves = child<ImageViewer>("imageViewer")->grab().toImage();
        QVERIFY(halves.pixelColor(page.width() / 2 - 1, y) == Qt::blue &&
                halves.pixelColor(page.width() / 2 + 1, y) == Qt::white);
        click("btnCopyImage");
        QCOMPARE(QApplication::clipboard()->image().pixelColor(5, 5), QColor(Qt::red));
        QCOMPARE(lastNotice(), QStringLiteral("图像已复制到剪贴板。"));
    }
};

QTEST_MAIN(TestCameraPage)
#include "test_camera_page.moc"
