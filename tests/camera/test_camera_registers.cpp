// The camera page's registers, one by one and as tables, against a board in a
// process of its own.

#include "camerapagetest.h"
#include "datamanagerwidget.h"
#include "dialoganswers.h"
#include "settings.h"

#include <QAbstractItemModel>
#include <QLabel>
#include <QSpinBox>
#include <QTableView>
#include <QUdpSocket>

class TestCameraRegisters : public CameraPageTest
{
    Q_OBJECT

private slots:
    void readsAndWritesRegisters();
    void answersByReply_data();
    void answersByReply();
    void readsTables();
    void readsFromTheBoardAsked();
    void asksBeforeTablesAreLost();
    void writesTables();
    void stopsTables();
    void keepsSettings();

private:
    void fillTable(DataManagerWidget *table, const QList<QStringList> &rows);
    QString cell(DataManagerWidget *table, int row) { return table->rows().at(row).value; }
};

void TestCameraRegisters::fillTable(DataManagerWidget *table, const QList<QStringList> &rows)
{
    QAbstractItemModel *model = table->findChild<QTableView *>()->model();
    for (int row = 0; row < rows.size(); ++row)
        for (int column = 0; column < 2; ++column)
            model->setData(model->index(row, column + 1), rows.at(row).at(column));
}

// The board's registers hold seven times their address.
void TestCameraRegisters::readsAndWritesRegisters()
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
    value->setText("5A");
    click("btnWriteRegister");
    QCOMPARE(tip(), QStringLiteral("寄存器值长度设置错误[1~4]"));
}

void TestCameraRegisters::answersByReply_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("expected");
    const QByteArray begin = "ORVN" + QByteArray(1, '\0') + QByteArray::fromHex("1000000011");
    QTest::newRow("bad packet") << begin + QByteArray::fromHex("010830000000") << "数据包接收错误!";
    QTest::newRow("length") << QByteArray("ORVN") + QByteArray::fromHex("0011000000110008305a5a0000")
                            << "当前数据长度与配置不符合！";
    QTest::newRow("never asked") << begin + QByteArray::fromHex("00aaaa5a0000") << "";
}

void TestCameraRegisters::answersByReply()
{
    QFETCH(QByteArray, reply);
    QFETCH(QString, expected);
    m_page->SltRecvImageData("board", reply);
    QCOMPARE(tip(), expected);
    QCOMPARE(child<QLineEdit>("editRegisterValue")->text(), QString());
}

void TestCameraRegisters::readsTables()
{
    BoardProcess board;
    QVERIFY(connectBoard(board));
    click("btnReadTable");
    auto *table = m_page->findChild<DataManagerWidget *>();
    QCOMPARE(table->windowTitle(), QStringLiteral("    读管理    "));
    // The third never answers, the fourth is refused, the fifth is no address.
    fillTable(table, {{"3001", ""},
                      {"3002", "old"},
                      {"00DD", "old"},
                      {"4000", "old"},
                      {"寄存器地址", "x"},
                      {" 0x0010", ""}});
    QTest::mouseClick(table->findChild<QPushButton *>("btnConfirm"), Qt::LeftButton);
    auto *progress = table->findChild<QLabel *>("labelRegisterProgress");
    QTRY_COMPARE_WITH_TIMEOUT(progress->text(), QStringLiteral("已完成 5/5，无应答 1，错误 1"), 20000);
    QCOMPARE(cell(table, 0), QStringLiteral("07")); // 0x15007, of which one byte is told
    QCOMPARE(cell(table, 1), QStringLiteral("0E"));
    QCOMPARE(cell(table, 2), QString()); // what was not read does not stand there as if it were
    QCOMPARE(cell(table, 3), QString());
    QCOMPARE(cell(table, 5), QStringLiteral("70"));
    const QAbstractItemModel *model = table->findChild<QTableView *>()->model();
    QCOMPARE(model->index(2, 2).data(Qt::ToolTipRole).toString(), QStringLiteral("开发板没有应答"));
    QVERIFY(model->index(0, 2).data(Qt::ToolTipRole).toString().isEmpty());

    // Late, but still for its row: 16 bits of the address tell.
    const auto reply = [this](const char *text) {
        m_page->SltRecvImageData("late", QByteArray("ORVN") + QByteArray::fromHex(text));
    };
    reply("01100000001100dd00410000"); // of the other device
    QCOMPARE(cell(table, 2), QString());
    reply("00100000001100dd00420000");
    QCOMPARE(cell(table, 2), QStringLiteral("42"));
    reply("00100000001100dd00430000"); // again, as of another board
    QCOMPARE(cell(table, 2), QStringLiteral("42"));
    reply("001000000011100099000000"); // to the last request
    QCOMPARE(cell(table, 5), QStringLiteral("70"));
    QCOMPARE(progress->text(), QStringLiteral("已完成 5/5，无应答 1，错误 1"));
    reply("001000000011000130990000");
    QCOMPARE(cell(table, 0), QStringLiteral("07"));
}

// Only what the asked board says becomes the value, and no answer leaves none.
void TestCameraRegisters::readsFromTheBoardAsked()
{
    child<QLineEdit>("editRegisterAddress")->setText("3008");
    for (const Protocol closed : {Server, Client, Udp, Serial}) {
        choose(closed);
        m_notices->clear();
        click("btnReadRegister");
        QCOMPARE(lastNotice(), QStringLiteral("没有已连接的摄像头，数据未发送！"));
    }
    QCOMPARE(m_page->counts().at(0), QStringLiteral("0"));
    const quint16 port = openPort(Udp);
    QUdpSocket asked;
    QUdpSocket other;
    QVERIFY(asked.bind(QHostAddress(QHostAddress::LocalHost)) &&
            other.bind(QHostAddress(QHostAddress::LocalHost)));
    child<QLineEdit>("editCameraDestinationPort")->setText(QString::number(asked.localPort()));
    const auto reply = [this, port](QUdpSocket &board, const char *text) {
        const int before = m_page->counts().at(1).toInt();
        const QByteArray packet = "ORVN" + QByteArray::fromHex(text);
        board.writeDatagram(packet, QHostAddress::LocalHost, port);
        return QTest::qWaitFor([&] { return m_page->counts().at(1).toInt() == before + packet.size(); },
                               20000);
    };
    auto *value = child<QLineEdit>("editRegisterValue");
    value->setText("55");
    click("btnReadRegister");
    QCOMPARE(value->text(), QString());
    QTRY_COMPARE_WITH_TIMEOUT(lastNotice(), QStringLiteral("寄存器[3008]没有应答！"), 20000);
    QVERIFY(reply(asked, "00100000001100aaaa010000")); // the board is known now
    QVERIFY(reply(other, "001000000011000830020000"));
    QVERIFY(reply(asked, "011000000011000830030000")); // the other device
    QCOMPARE(value->text(), QString());
    QVERIFY(reply(asked, "001000000011000830040000"));
    QCOMPARE(value->text(), QStringLiteral("04"));
}

void TestCameraRegisters::asksBeforeTablesAreLost()
{
    QVERIFY(m_page->mayClose());
    m_page->findChild<QPushButton *>("btnReadTable")->click();
    auto *table = m_page->findChild<DataManagerWidget *>();
    fillTable(table, {{"3008", "1"}});
    const QString file = m_root->filePath("table.csv");
    QStringList chosen;
    int answer = 0;
    DialogAnswers::instance().message = [&answer](auto...) { return answer; };
    DialogAnswers::instance().fileNames = [&chosen](auto...) { return chosen; };
    for (answer = 0; answer < 3; ++answer) // cancel, save without a file, discard
        QCOMPARE(m_page->mayClose(), answer == 2);
    answer = 1;
    chosen = QStringList{file};
    QVERIFY(m_page->mayClose());
    QVERIFY(QFileInfo(file).size() > 0);
    answer = 0;
    QVERIFY(m_page->mayClose()); // nothing is lost
}

void TestCameraRegisters::writesTables()
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
                              QStringLiteral("已完成 2/2，未发送 2"), 20000);
    QFile record(folder.filePath("record"));
    QVERIFY(record.open(QIODevice::ReadOnly));
    const QByteArray head = "ORVN" + QByteArray(1, '\0') + QByteArray::fromHex("0f00000010");
    QByteArray written;
    QTRY_COMPARE((written += record.readAll()).size(), 30);
    QCOMPARE(written.left(13), head + QByteArray::fromHex("013011"));
    QCOMPARE(written.mid(15, 13), head + QByteArray::fromHex("043044"));
}

void TestCameraRegisters::stopsTables()
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

// Of the registers, and of the link that was opened.
void TestCameraRegisters::keepsSettings()
{
    const QString port = QString::number(openPort(Udp));
    click("btnCameraOpen");
    child<QLineEdit>("editCameraDestinationPort")->setText("1234");
    child<QLineEdit>("editCameraPort")->setText(port);
    click("btnCameraOpen");
    QVERIFY(isOpen());
    child<QSpinBox>("spinAddressLength")->setValue(3);
    child<QSpinBox>("spinValueLength")->setValue(4);
    child<QSpinBox>("spinValueLength")->setValue(7); // nothing that could be used
    Settings::instance() = Settings();
    Settings::load();
    const CameraDebugWidget again;
    QCOMPARE(again.findChild<QSpinBox *>("spinAddressLength")->value(), 3);
    QCOMPARE(again.findChild<QSpinBox *>("spinValueLength")->value(), 4);
    QCOMPARE(again.findChild<QComboBox *>("comboCameraProtocol")->currentIndex(), int(Udp));
    QCOMPARE(again.findChild<QLineEdit *>("editCameraPort")->text(), port);
    QCOMPARE(again.findChild<QLineEdit *>("editCameraDestinationPort")->text(), QStringLiteral("1234"));
}

QTEST_MAIN(TestCameraRegisters)
#include "test_camera_registers.moc"
