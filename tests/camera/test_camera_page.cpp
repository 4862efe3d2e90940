// The camera page against boards in processes of their own, and against bytes.

#include "app/apppaths.h"
#include "app/settings.h"
#include "camera/cameradebugwidget.h"
#include "camera/frameshow.h"
#include "camera/imageformatconfig.h"
#include "camera/imageviewer.h"
#include "register/datamanagerwidget.h"
#include "resources/korvexresources.h"
#include "serial/serialports.h"
#include "shell/base/dialoganswers.h"
#include "shell/base/qtmessagetip.h"
#include "tests/support/boardprocess.h"

#include <QAbstractItemModel>
#include <QApplication>
#include <QBuffer>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTableView>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

class TestCameraPage : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void showsABoardOnASerialPort();
    void showsABoardOnTheNetwork_data();
    void showsABoardOnTheNetwork();
    void readsAndWritesRegisters();
    void answersByReply_data();
    void answersByReply();
    void readsTables();
    void writesTables();
    void stopsTables();
    void toleratesChecksums();
    void announces();
    void keepsSendersApart();
    void showsOnlyTheNewest();
    void decodesFormats_data();
    void decodesFormats();
    void takesRawJpegs();
    void savesAndCopies();
    void keepsLengths();

private:
    template <class Widget> Widget *child(const char *name)
    {
        return m_page->findChild<Widget *>(QLatin1String(name));
    }
    void click(const char *name) { QTest::mouseClick(child<QPushButton>(name), Qt::LeftButton); }
    QRgb shown(int device, int x, int y)
    {
        return child<ImageViewer>("imageViewer")->image(device).toImage().pixel(x, y);
    }
    bool hasPicture(int device) { return !child<ImageViewer>("imageViewer")->image(device).isNull(); }
    // A board connected to the listening page.
    bool connectBoard(BoardProcess &board, const QStringList &options = {});
    void fillTable(DataManagerWidget *table, const QList<QStringList> &rows);
    QString cell(DataManagerWidget *table, int row) { return table->rows().at(row).value; }
    QString tip() const { return QtMessageTip::current() ? QtMessageTip::current()->text() : QString(); }
    // Opens a port that is free; 0 on failure.
    quint16 openPort(int protocol);

    std::unique_ptr<QTemporaryDir> m_root;
    std::unique_ptr<CameraDebugWidget> m_page;
    std::unique_ptr<QSignalSpy> m_notices;
};

void TestCameraPage::initTestCase()
{
    initKorvexResources();
}

void TestCameraPage::init()
{
    m_root = std::make_unique<QTemporaryDir>();
    AppPaths::setRoot(m_root->path());
    AppPaths::makeFolders();
    Settings::instance() = Settings();
    m_page = std::make_unique<CameraDebugWidget>();
    m_page->resize(1000, 600);
    m_page->show();
    m_notices = std::make_unique<QSignalSpy>(m_page.get(), &CameraDebugWidget::signalNotify);
}

void TestCameraPage::cleanup()
{
    DialogAnswers::instance() = DialogAnswers();
    if (QtMessageTip::current())
        QtMessageTip::current()->close();
    m_page.reset();
}

quint16 TestCameraPage::openPort(int protocol)
{
    child<QComboBox>("comboCameraProtocol")->setCurrentIndex(protocol);
    for (int attempt = 0; attempt < 20; ++attempt) { // another program may take it first
        QTcpServer probe;
        probe.listen(QHostAddress::Any);
        const quint16 port = probe.serverPort();
        probe.close();
        child<QLineEdit>("editCameraPort")->setText(QString::number(port));
        click("btnCameraOpen");
        if (!child<QLineEdit>("editCameraPort")->isEnabled())
            return port;
    }
    return 0;
}

void TestCameraPage::showsABoardOnASerialPort()
{
    BoardProcess board;
    QVERIFY(
        board.start({"--mode", "camera", "--test-pattern", "--width", "64", "--height", "48", "--fps", "5"}));
    qputenv("KORVEX_VIRTUAL_PORTS", board.folder().toLocal8Bit());
    m_page->SltSerialportChanged(SerialPorts::entries());
    child<QComboBox>("comboCameraProtocol")->setCurrentIndex(3);
    click("btnCameraOpen");
    QTRY_VERIFY_WITH_TIMEOUT(hasPicture(0), 20000);
    QCOMPARE(child<QSpinBox>("spinImageWidth")->value(), 64);
    // Bars of eight pixels: white first, black last; the last row is past the data.
    QTRY_COMPARE(shown(0, 4, 10), qRgb(0xf8, 0xfc, 0xf8));
    QCOMPARE(shown(0, 12, 10), qRgb(0xf8, 0xfc, 0));
    QCOMPARE(shown(0, 44, 10), qRgb(0xf8, 0, 0));
    QCOMPARE(shown(0, 4, 47), qRgb(0, 0, 0));

    // The plug is pulled: closed, said, and half a frame is forgotten.
    QVERIFY(board.stop());
    QTRY_VERIFY(child<QComboBox>("comboCameraProtocol")->isEnabled());
    QCOMPARE(m_notices->last().at(0).toString(), QStringLiteral("当前串口已拔出，请重新打开!"));
}

void TestCameraPage::showsABoardOnTheNetwork_data()
{
    QTest::addColumn<int>("protocol");
    QTest::addColumn<QString>("format");
    QTest::newRow("server, RGB565") << 0 << "4";
    QTest::newRow("server, RGB888") << 0 << "5";
    QTest::newRow("server, raw RGB as png") << 0 << "3";
    QTest::newRow("client") << 1 << "4";
    QTest::newRow("UDP") << 2 << "4";
}

void TestCameraPage::showsABoardOnTheNetwork()
{
    QFETCH(int, protocol);
    QFETCH(QString, format);
    BoardProcess board;
    QStringList options{"--act", "camera",   "--test-pattern", "--width",   "160", "--height", "120", "--fps",
                        "10",    "--format", format,           "--devices", "2",   "--delay",  "0"};
    if (protocol == 1) {
        QVERIFY(board.startOnNetwork("tcp-server", options));
        child<QComboBox>("comboCameraProtocol")->setCurrentIndex(1);
        child<QLineEdit>("editCameraPort")->setText(QString::number(board.netPort()));
        click("btnCameraOpen");
    } else {
        const QString port = QString::number(openPort(protocol));
        if (protocol == 0)
            QVERIFY(board.startOnNetwork("tcp-client", options << "--net-port" << port));
        else
            QVERIFY(board.startOnNetwork("udp", options << "--to-port" << port));
    }
    QTRY_VERIFY_WITH_TIMEOUT(hasPicture(0) && hasPicture(1), 20000);
    const QRgb white = format == "4" ? qRgb(0xf8, 0xfc, 0xf8) : qRgb(0xff, 0xff, 0xff);
    const QRgb yellow = format == "4" ? qRgb(0xf8, 0xfc, 0) : qRgb(0xff, 0xff, 0);
    for (int device = 0; device < 2; ++device) {
        QTRY_COMPARE(shown(device, 10, 10), white);
        QCOMPARE(shown(device, 30, 10), yellow);
    }
}

bool TestCameraPage::connectBoard(BoardProcess &board, const QStringList &options)
{
    const quint16 port = openPort(0);
    return board.startOnNetwork("tcp-client",
                                QStringList{"--act", "camera", "--fps", "1", "--width", "16", "--height",
                                            "16", "--delay", "0", "--net-port", QString::number(port)} +
                                    options) &&
           QTest::qWaitFor([this] { return hasPicture(0); }, 20000);
}

void TestCameraPage::fillTable(DataManagerWidget *table, const QList<QStringList> &rows)
{
    QAbstractItemModel *model = table->findChild<QTableView *>()->model();
    for (int row = 0; row < rows.size(); ++row)
        for (int column = 0; column < 2; ++column)
            model->setData(model->index(row, column + 1), rows.at(row).at(column));
}

// The board's registers hold seven times their address.
void TestCameraPage::readsAndWritesRegisters()
{
    BoardProcess board;
    QVERIFY(connectBoard(board, {"--value-length", "2"}));
    child<QSpinBox>("spinValueLength")->setValue(2);
    auto *value = child<QLineEdit>("editRegisterValue");
    child<QLineEdit>("editRegisterAddress")->setText("3008");
    click("btnReadRegister");
    QTRY_COMPARE(value->text(), QStringLiteral("5038"));
    value->setText("beef");
    click("btnWriteRegister");
    click("btnReadRegister");
    QTRY_COMPARE(value->text(), QStringLiteral("BEEF"));
    QVERIFY(m_page->counts().at(0).toInt() == 16 + 16 + 16);

    child<QLineEdit>("editRegisterAddress")->setText("4000");
    click("btnReadRegister");
    QTRY_COMPARE(tip(), QStringLiteral("没有这个寄存器!"));
    child<QLineEdit>("editRegisterAddress")->setText("00EE");
    click("btnReadRegister");
    QTRY_COMPARE(tip(), QStringLiteral("寄存器读取错误，错误代码[5]!"));

    child<QSpinBox>("spinAddressLength")->setValue(5);
    click("btnReadRegister");
    QCOMPARE(tip(), QStringLiteral("寄存器地址长度设置错误[1~4]"));
    child<QSpinBox>("spinAddressLength")->setValue(2);
    child<QSpinBox>("spinValueLength")->setValue(0);
    click("btnWriteRegister");
    QCOMPARE(tip(), QStringLiteral("寄存器值长度设置错误[1~4]"));
}

void TestCameraPage::answersByReply_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("expected");
    const QByteArray begin = "ORVN" + QByteArray(1, '\0') + QByteArray::fromHex("1000000011");
    QTest::newRow("bad packet") << begin + QByteArray::fromHex("010830000000") << "数据包接收错误!";
    QTest::newRow("length") << QByteArray("ORVN") + QByteArray::fromHex("0011000000110008305a5a0000")
                            << "当前数据长度与配置不符合！";
    QTest::newRow("never asked") << begin + QByteArray::fromHex("00aaaa5a0000") << "";
}

void TestCameraPage::answersByReply()
{
    QFETCH(QByteArray, reply);
    QFETCH(QString, expected);
    m_page->SltRecvImageData("board", reply);
    QCOMPARE(tip(), expected);
    QCOMPARE(child<QLineEdit>("editRegisterValue")->text(), QString());
}

void TestCameraPage::readsTables()
{
    BoardProcess board;
    QVERIFY(connectBoard(board));
    click("btnReadTable");
    auto *table = m_page->findChild<DataManagerWidget *>();
    QCOMPARE(table->windowTitle(), QStringLiteral("    读管理    "));
    // The third never answers, the fourth is refused, the fifth is no address.
    fillTable(
        table,
        {{"3001", ""}, {"3002", "old"}, {"00DD", "old"}, {"4000", ""}, {"寄存器地址", "x"}, {"0010", ""}});
    QTest::mouseClick(table->findChild<QPushButton *>("btnConfirm"), Qt::LeftButton);
    auto *progress = table->findChild<QLabel *>("labelRegisterProgress");
    QTRY_COMPARE_WITH_TIMEOUT(progress->text(), QStringLiteral("已完成 5/5，无应答 1，错误 1"), 20000);
    QCOMPARE(cell(table, 0), QStringLiteral("07")); // 0x15007, of which one byte is told
    QCOMPARE(cell(table, 1), QStringLiteral("0E"));
    QCOMPARE(cell(table, 2), QStringLiteral("old"));
    QCOMPARE(cell(table, 5), QStringLiteral("70"));
    const QAbstractItemModel *model = table->findChild<QTableView *>()->model();
    QCOMPARE(model->index(2, 2).data(Qt::ToolTipRole).toString(), QStringLiteral("开发板没有应答"));
    QVERIFY(model->index(0, 2).data(Qt::ToolTipRole).toString().isEmpty());

    // Late, but still for its row: 16 bits of the address tell.
    m_page->SltRecvImageData("late", QByteArray("ORVN") + QByteArray::fromHex("00100000001100dd00420000"));
    QCOMPARE(cell(table, 2), QStringLiteral("42"));
}

void TestCameraPage::writesTables()
{
    BoardProcess board;
    QTemporaryDir folder;
    QVERIFY(connectBoard(board, {"--record", folder.filePath("record")}));
    click("btnWriteTable");
    auto *table = m_page->findChild<DataManagerWidget *>();
    QCOMPARE(table->windowTitle(), QStringLiteral("    写管理   "));
    fillTable(table,
              {{"3001", "11"}, {"3002", "1234"}, {"3003", ""}, {"3004", "44"}}); // too wide, without value
    QTest::mouseClick(table->findChild<QPushButton *>("btnConfirm"), Qt::LeftButton);
    QTRY_COMPARE_WITH_TIMEOUT(table->findChild<QLabel *>("labelRegisterProgress")->text(),
                              QStringLiteral("已完成 2/2"), 20000);
    QFile record(folder.filePath("record"));
    QVERIFY(record.open(QIODevice::ReadOnly));
    const QByteArray head = "ORVN" + QByteArray(1, '\0') + QByteArray::fromHex("0f00000010");
    QByteArray written;
    QTRY_COMPARE((written += record.readAll()).size(), 30);
    QCOMPARE(written.left(13), head + QByteArray::fromHex("013011"));
    QCOMPARE(written.mid(15, 13), head + QByteArray::fromHex("043044"));
}

void TestCameraPage::stopsTables()
{
    BoardProcess board;
    QVERIFY(connectBoard(board));
    click("btnReadTable");
    auto *table = m_page->findChild<DataManagerWidget *>();
    QList<QStringList> silent;
    for (int i = 0; i < 90; ++i)
        silent.append(QStringList{"00DD", ""});
    fillTable(table, silent);
    auto *confirm = table->findChild<QPushButton *>("btnConfirm");
    auto *stop = table->findChild<QPushButton *>("btnStopRegisters");
    for (const bool byButton : {true, false}) {
        QTest::mouseClick(confirm, Qt::LeftButton);
        QTRY_VERIFY(stop->isVisible());
        if (byButton)
            QTest::mouseClick(stop, Qt::LeftButton);
        else
            QVERIFY(board.stop()); // the next request has nobody to go to
        QTRY_VERIFY_WITH_TIMEOUT(confirm->isEnabled(), 20000);
        QVERIFY(
            table->findChild<QLabel *>("labelRegisterProgress")->text().startsWith(QStringLiteral("已停止")));
    }
}

void TestCameraPage::toleratesChecksums()
{
    const QByteArray head = QByteArray("ORVN") + QByteArray::fromHex("00");
    m_page->SltRecvImageData("b", head + QByteArray::fromHex("0f000000"
                                                             "01"
                                                             "0501000100"));
    const QByteArray red = head + QByteArray::fromHex("0f00000002") +
                           QByteArray::fromHex("ff0000"
                                               "bad0");
    child<QCheckBox>("checkCrc16")->setChecked(true);
    m_page->SltRecvImageData("b", red);
    QCOMPARE(m_page->frames(), qint64(0));
    QVERIFY(child<QLabel>("labelImageError")->isVisible());
    child<QCheckBox>("checkCrc16")->setChecked(false);
    m_page->SltRecvImageData("b", red);
    QCOMPARE(m_page->frames(), qint64(1));
    QTRY_VERIFY(hasPicture(0));
    QCOMPARE(shown(0, 0, 0), qRgb(255, 0, 0));
}

void TestCameraPage::announces()
{
    m_page->SltRecvImageData("b", QByteArray("ORVN") + QByteArray::fromHex("010f000000"
                                                                           "01"
                                                                           "058002e001"));
    QCOMPARE(m_notices->last().at(0).toString(),
             QStringLiteral("设备[2]修改图像格式[RGB888]成功: 宽度: 640像素,高度：480像素."));
    child<QComboBox>("comboCameraDevice")->setCurrentIndex(1);
    QCOMPARE(child<QComboBox>("comboImageFormat")->currentText(), QStringLiteral("RGB888"));
    QCOMPARE(child<QSpinBox>("spinImageWidth")->value(), 640);
    child<QComboBox>("comboCameraDevice")->setCurrentIndex(0);
    QCOMPARE(child<QSpinBox>("spinImageHeight")->value(), 240);
}

void TestCameraPage::keepsSendersApart()
{
    child<QComboBox>("comboImageFormat")->setCurrentText("RGB888");
    emit child<QComboBox>("comboImageFormat")
        ->activated(child<QComboBox>("comboImageFormat")->currentIndex());
    child<QSpinBox>("spinImageWidth")->setValue(2);
    child<QSpinBox>("spinImageHeight")->setValue(1);
    const QByteArray frame = QByteArray("ORVN") +
                             QByteArray::fromHex("0012000000"
                                                 "02"
                                                 "ff00000000ff") +
                             "cc";
    m_page->SltRecvImageData("a", frame.left(12));
    m_page->SltRecvImageData("b", frame.left(11));
    m_page->SltRecvImageData("a", frame.mid(12));
    m_page->SltRecvImageData("b", frame.mid(11));
    QCOMPARE(m_page->frames(), qint64(2));
}

void TestCameraPage::showsOnlyTheNewest()
{
    child<QSpinBox>("spinImageWidth")->setValue(1);
    child<QSpinBox>("spinImageHeight")->setValue(1);
    QByteArray chunk;
    for (int i = 0; i < 50; ++i)
        chunk += QByteArray("ORVN") +
                 QByteArray::fromHex("0010000000"
                                     "02"
                                     "00001f00") +
                 "cc";
    m_page->SltRecvImageData("a", chunk);
    QCOMPARE(m_page->frames(), qint64(50));
    QTRY_COMPARE(m_page->frameShow().shown(), qint64(1));
    QCOMPARE(m_page->frameShow().skipped(), qint64(49));
    m_page->SltCalculationRate();
    QCOMPARE(child<QLabel>("labelFrameNumber")->text(), QStringLiteral("帧编号: 50"));
    QCOMPARE(child<QLabel>("labelSkipped")->text(), QStringLiteral("未显示: 49"));
    m_page->clearCounts();
    QCOMPARE(child<QLabel>("labelFrameNumber")->text(), QStringLiteral("帧编号: 0"));
}

static QByteArray jpegFile(int side)
{
    QImage picture(side, side, QImage::Format_RGB32);
    picture.fill(Qt::green);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    picture.save(&buffer, "jpg");
    return bytes;
}

void TestCameraPage::decodesFormats_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<int>("width");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QSize>("size"); // empty: nothing is shown
    const QByteArray file = jpegFile(30);
    QTest::newRow("jpg file") << 1 << 100 << file << QSize(30, 30);
    QTest::newRow("png code with a file") << 3 << 100 << file << QSize(30, 30);
    QTest::newRow("jpg code, raw") << 1 << 2 << QByteArray(12, 'x') << QSize(2, 2);
    QTest::newRow("jpg code, longer than raw") << 1 << 2 << QByteArray(99, 'x') << QSize(2, 2);
    QTest::newRow("short and no file") << 1 << 100 << QByteArray(10, 'x') << QSize();
    QTest::newRow("corrupt jpg") << 1 << 100 << file.left(20) + QByteArray(400, 'z') << QSize();
    QTest::newRow("bmp code is RGB565") << 2 << 2 << QByteArray(8, 'x') << QSize(2, 2);
    QTest::newRow("RGB565, short") << 4 << 64 << QByteArray(8, 'x') << QSize(64, 64);
    QTest::newRow("RGB565, nothing") << 4 << 64 << QByteArray() << QSize(64, 64);
    QTest::newRow("RGB888, short") << 5 << 64 << QByteArray(8, 'x') << QSize(64, 64);
    QTest::newRow("unknown") << 9 << 2 << QByteArray(99, 'x') << QSize();
    QTest::newRow("further") << 7 << 2 << QByteArray(99, 'x') << QSize();
    QTest::newRow("no size") << 4 << 0 << QByteArray(99, 'x') << QSize();
    QTest::newRow("largest size") << 4 << 65535 << QByteArray(99, 'x') << QSize();
}

void TestCameraPage::decodesFormats()
{
    QFETCH(int, format);
    QFETCH(int, width);
    QFETCH(QByteArray, bytes);
    QFETCH(QSize, size);
    const auto side = quint16(width);
    const QImage picture = FrameShow::decode({bytes, ImageRecord{quint8(format), side, side}, false});
    QCOMPARE(picture.size(), size.isValid() ? size : QSize(0, 0));
}

void TestCameraPage::takesRawJpegs()
{
    child<QCheckBox>("checkJpegData")->setChecked(true);
    const QByteArray file = jpegFile(40);
    m_page->SltRecvImageData("a", "noise" + file + file.left(50));
    m_page->SltRecvImageData("a", file.mid(50));
    QCOMPARE(m_page->frames(), qint64(2));
    QTRY_VERIFY(hasPicture(0));
    QCOMPARE(child<ImageViewer>("imageViewer")->image(0).size(), QSize(40, 40));
    // Half a picture is forgotten with the mode.
    m_page->SltRecvImageData("a", file.left(50));
    child<QCheckBox>("checkJpegData")->setChecked(false);
    child<QCheckBox>("checkJpegData")->setChecked(true);
    m_page->SltRecvImageData("a", file.mid(50) + file);
    QCOMPARE(m_page->frames(), qint64(3));
    QTRY_COMPARE(m_page->frameShow().shown() + m_page->frameShow().skipped(), qint64(3));
}

void TestCameraPage::savesAndCopies()
{
    click("btnSaveImage");
    QCOMPARE(m_notices->last().at(0).toString(), QStringLiteral("还没有图像，无法保存！"));
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
        QVERIFY(saved.blue() > 250 && saved.red() < 5);
        QCOMPARE(QImage(file).size(), QSize(20, 10));
    }
    child<QComboBox>("comboDeviceCount")->setCurrentIndex(1);
    child<QComboBox>("comboPicture")->setCurrentIndex(1);
    click("btnCopyImage");
    QCOMPARE(QApplication::clipboard()->image().pixelColor(5, 5), QColor(Qt::red));
}

void TestCameraPage::keepsLengths()
{
    child<QSpinBox>("spinAddressLength")->setValue(3);
    child<QSpinBox>("spinValueLength")->setValue(4);
    child<QSpinBox>("spinValueLength")->setValue(7); // nothing that could be used
    Settings::instance() = Settings();
    Settings::load();
    const CameraDebugWidget again;
    QCOMPARE(again.findChild<QSpinBox *>("spinAddressLength")->value(), 3);
    QCOMPARE(again.findChild<QSpinBox *>("spinValueLength")->value(), 4);
}

QTEST_MAIN(TestCameraPage)
#include "test_camera_page.moc"
