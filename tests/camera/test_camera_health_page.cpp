// How good the link is, as the camera page shows it, and what helps where it is bad.

#include "cameraframe.h"
#include "camerapagetest.h"
#include "dialoganswers.h"

#include <QCheckBox>
#include <QFile>
#include <QSpinBox>
#include <QTableWidget>
#include <QTcpServer>
#include <QTcpSocket>

namespace {

QByteArray format(const char *hexOfSize)
{
    return "ORVN" + QByteArray::fromHex("000f0000000105") + QByteArray::fromHex(hexOfSize);
}

const QByteArray kRed = "ORVN" + QByteArray::fromHex("001200000002ff0000ff0000") + "cc"; // 2 pixels

} // namespace

class TestCameraHealthPage : public CameraPageTest
{
    Q_OBJECT

private:
    QString cell(const char *table, int row, int column) const
    {
        const QTableWidgetItem *item = child<QTableWidget>(table)->item(row, column);
        return item ? item->text() : QString();
    }

private slots:
    void showsASnapshot_data()
    {
        QTest::addColumn<int>("missing"); // bytes at the end
        QTest::addColumn<bool>("isShown");
        QTest::newRow("complete") << 0 << true;
        QTest::newRow("without an end marker") << 2 << true;
        QTest::newRow("only a beginning") << 300 << false;
    }

    // A server that sends a picture to each connection and closes it.
    void showsASnapshot()
    {
        QFETCH(int, missing);
        QFETCH(bool, isShown);
        QByteArray file = jpegFile(40, Qt::blue);
        file = isShown ? file.chopped(missing) : file.left(missing);
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost));
        connect(&server, &QTcpServer::newConnection, &server, [&] {
            QTcpSocket *const client = server.nextPendingConnection();
            client->write(file);
            client->disconnectFromHost();
        });
        child<QCheckBox>("checkJpegData")->setChecked(true);
        choose(Client);
        for (int picture = 1; picture <= 2; ++picture) {
            openAt(server.serverPort());
            QTRY_COMPARE_WITH_TIMEOUT(m_page->counts().at(1).toInt(), picture * file.size(), 20000);
            QTRY_VERIFY_WITH_TIMEOUT(m_page->isClosed(), 20000);
            QCOMPARE(int(m_page->frames()), isShown ? picture : 0);
        }
        if (isShown)
            QTRY_VERIFY_WITH_TIMEOUT(hasPicture(0), 20000);
    }

    // The format that one board announces is not the other's, until the user chooses.
    void keepsFormatsApart()
    {
        m_page->SltRecvImageData("wide", format("02000100"));
        m_page->SltRecvImageData("high", format("01000200"));
        const auto size = [this] { return child<ImageViewer>("imageViewer")->image(0).size(); };
        m_page->SltRecvImageData("wide", kRed);
        QTRY_COMPARE(size(), QSize(2, 1));
        m_page->SltRecvImageData("high", kRed);
        QTRY_COMPARE(size(), QSize(1, 2));
        m_page->SltRecvImageData("new", kRed);
        QTRY_COMPARE(size(), QSize(1, 2)); // as the panel shows
        child<QSpinBox>("spinImageHeight")->setValue(4);
        m_page->SltRecvImageData("wide", kRed);
        QTRY_COMPARE(size(), QSize(1, 4));
    }

    void showsCountsAndFaults()
    {
        QVERIFY(!child<QWidget>("cameraHealthPanel")->isVisible()); // at first start
        m_page->SltRecvImageData("a", format("02000100"));
        m_page->SltRecvImageData("a", kRed);
        m_page->SltRecvImageData("a", "this is no packet");
        click("btnCameraHealth");
        QVERIFY(child<QWidget>("cameraHealthPanel")->isVisible());
        QCOMPARE(cell("tableCameraHealth", 1, 0), QString("a"));
        QCOMPARE(cell("tableCameraHealth", 1, 3), QString("1")); // a wrong checksum
        QCOMPARE(cell("tableCameraHealth", 2, 7), QString("17"));
        QCOMPARE(cell("tableCameraFaults", 0, 4), QString::number(15 + kRed.size()));
        QCOMPARE(cell("tableCameraFaults", 0, 6), QString("74 68 69 73 20 69 73 20 6E 6F 20 70 61 63 6B 65"));
        const QString file = m_root->filePath("health.csv");
        DialogAnswers::instance().fileNames = [&](auto, auto, auto, auto) { return QStringList{file}; };
        click("btnExportHealth");
        QFile written(file);
        QVERIFY(written.open(QIODevice::ReadOnly));
        const QString text = QString::fromUtf8(written.readAll());
        QVERIFY(text.contains("a,1,0,1,0,0,0,0,") && text.contains(",74 68 69 73 "));
        m_page->clearCounts();
        m_page->SltCalculationRate();
        QCOMPARE(child<QTableWidget>("tableCameraHealth")->rowCount(), 1);
        QCOMPARE(cell("tableCameraHealth", 0, 3), QString("0"));
    }

    // Bytes arrive out of step: the page offers to search them, once.
    void offersToResynchronize()
    {
        QVERIFY(openPort(Udp) != 0);
        const auto isOffered = [this](const QByteArray &bytes) {
            m_page->SltRecvImageData("board", bytes);
            m_page->SltCalculationRate();
            return child<QWidget>("resynchronizeOffer")->isVisible();
        };
        const QByteArray garbage(3000, 'g');
        QVERIFY(!isOffered(garbage));
        QTRY_VERIFY_WITH_TIMEOUT(isOffered(garbage), 20000);
        click("btnUseResynchronize");
        QVERIFY(child<QCheckBox>("checkResynchronize")->isChecked());
        QVERIFY(Settings::instance().cameraPage.resynchronizes);
        QVERIFY(!isOffered("x" + CameraFrame::build(0, CameraFrame::ImageData, "data")));
        QCOMPARE(m_page->frames(), qint64(1));
    }

    // Every fifth frame ends before its time.
    void losesOnlyDamagedFrames()
    {
        child<QCheckBox>("checkResynchronize")->setChecked(true);
        child<QCheckBox>("checkCrc16")->setChecked(true);
        BoardProcess board;
        QVERIFY(connectBoard(board, {"--camera-fault", "truncate", "--fps", "200", "--frames", "51"}));
        QTRY_COMPARE_WITH_TIMEOUT(m_page->frames(), qint64(41), 20000);
        click("btnCameraHealth");
        QTRY_COMPARE((m_page->SltCalculationRate(), cell("tableCameraHealth", 0, 4)), QString("10"));
    }
};

QTEST_MAIN(TestCameraHealthPage)
#include "test_camera_health_page.moc"
