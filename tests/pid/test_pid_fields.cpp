// The PID page sending from its fields and showing reports.

#include "pidpagetest.h"

class TestPidFields : public PidPageTest
{
    Q_OBJECT

private slots:
    void sendsCommands();
    void takesFieldsByReturn();
    void sendsNothingWrong_data();
    void sendsNothingWrong();
    void sendsWhatIsStored();
    void showsReportsOfTheSelectedChannel();
    void keepsWhatIsTyped();
    void showsReportsAgainAfter_data();
    void showsReportsAgainAfter();
    void keepsIntegersThatAreTyped();
    void takesPastedText_data();
    void takesPastedText();
    void followsStartAndStop();
    void plotsActualValues();
    void addsNothingWhileStopped();
    void startsAfreshWhenOpened();
    void skipsAFalseLength();

private:
    QString shownGains() const { return text("editP") + '/' + text("editI") + '/' + text("editD"); }
};

void TestPidFields::sendsCommands()
{
    open();
    click("btnSendPid"); // the first text of the fields, 0.567
    QCOMPARE(m_board->read(23), hex("4f52564e011700000010e926113fe926113fe926113f8a"));
    select(2);
    type("editP", "1.5");
    type("editI", "0.0");
    type("editD", "0.0");
    click("btnSendPid");
    QCOMPARE(m_board->read(23), hex("4f52564e0217000000100000c03f00000000000000006d"));
    type("editTarget", "-2147483648");
    click("btnSendTarget");
    QCOMPARE(m_board->read(15), hex("4f52564e020f0000001100000080e7"));
    type("editPeriod", "20");
    click("btnSendPeriod");
    QCOMPARE(m_board->read(15), hex("4f52564e020f00000015140000007f"));
    select(1);
    click("btnPidStart");
    QCOMPARE(startText(), kRunning);
    click("btnPidStart");
    QCOMPARE(startText(), kIdle);
    click("btnPidReset");
    QCOMPARE(m_board->read(33), kStart1 + kStop1 + hex("4f52564e010b0000001465"));
    // What was sent is stored; the period is the board's to tell.
    select(2);
    QCOMPARE(text("editP") + '/' + text("editTarget") + '/' + text("editPeriod"), "1.500/-2147483648/0");
}

void TestPidFields::takesFieldsByReturn()
{
    open();
    type("editI", "2");
    QTest::keyClick(child<QLineEdit>("editI"), Qt::Key_Return);
    QCOMPARE(text("editI"), "2.0");
    QCOMPARE(child<QLineEdit>("editI")->selectedText(), "2.0");
    QCOMPARE(m_board->read(23).mid(14, 4), hex("00000040"));
    type("editTarget", "7x");
    QTest::keyClick(child<QLineEdit>("editTarget"), Qt::Key_Return);
    QCOMPARE(child<QLineEdit>("editTarget")->selectedText(), "7");
    QCOMPARE(m_board->read(15).mid(10, 4), hex("07000000"));
}

void TestPidFields::sendsNothingWrong_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("text");
    for (const char *text : {"", "-", "2147483648", "-2147483649", "99999999999999999999"}) {
        QTest::addRow("target '%s'", text) << "editTarget"
                                           << "btnSendTarget" << text;
        QTest::addRow("period '%s'", text) << "editPeriod"
                                           << "btnSendPeriod" << text;
    }
    QTest::newRow("empty gain") << "editD"
                                << "btnSendPid"
                                << "";
    QTest::newRow("huge gain") << "editD"
                               << "btnSendPid" << QString(50, '9') + ".0";
}

void TestPidFields::sendsNothingWrong()
{
    QFETCH(QString, field);
    QFETCH(QString, button);
    QFETCH(QString, text);
    open();
    child<QLineEdit>(qPrintable(field))->setText(text);
    m_notices->clear();
    click(qPrintable(button));
    QVERIFY2(lastNotice().contains(QStringLiteral("未发送")), qPrintable(lastNotice()));
    click("btnPidReset"); // arrives first
    QCOMPARE(m_board->read(11), hex("4f52564e010b0000001465"));
}

void TestPidFields::sendsWhatIsStored()
{
    open();
    // 0.123456786, -1.00000001e-07 and 1000000.06
    receive(report(1, 3,
                   "e9d6fc3d"
                   "95bfd6b3"
                   "01247449"));
    QCOMPARE(text("editP") + '/' + text("editI") + '/' + text("editD"), "0.123457/-1e-07/1e+06");
    click("btnSendPid");
    QCOMPARE(m_board->read(23).mid(10, 12), hex("e9d6fc3d95bfd6b301247449"));
    select(2);
    select(1);
    QCOMPARE(text("editP") + '/' + text("editI") + '/' + text("editD"), "0.123/-0.000/1000000.063");
    QCOMPARE(child<QLineEdit>("editP")->toolTip(), "0.12345678");
    type("editD", "0.5");
    QTest::keyClick(child<QLineEdit>("editI"), Qt::Key_Return); // shown by us, not typed
    QCOMPARE(m_board->read(23).mid(10, 12), hex("e9d6fc3d95bfd6b30000003f"));
    // Typed again, the same text means what it says.
    type("editP", "0.123");
    click("btnSendPid");
    QCOMPARE(m_board->read(23).mid(10, 4), hex("6de7fb3d"));
    receive(report(1, 3,
                   "0000c07f"
                   "0000807f"
                   "0000803f"));
    QCOMPARE(text("editP") + '/' + text("editI"), "nan/inf");
    click("btnSendPid");
    QVERIFY(lastNotice().contains(QStringLiteral("未发送")));
}

void TestPidFields::showsReportsOfTheSelectedChannel()
{
    receive(report(2, 1, "39300000") + report(2, 6, "64000000") + report(2, 3, "0000803f000000000000003f"));
    QCOMPARE(text("editTarget") + '/' + text("editPeriod") + '/' + text("editP"), "//0.567");
    select(2);
    QCOMPARE(text("editTarget") + '/' + text("editPeriod") + '/' + text("editP"), "12345/100/1.000");
    receive(report(2, 1, "ffffffff") + report(2, 6, "01000000") + report(2, 3, "cdcccc3d0000000000000000"));
    QCOMPARE(text("editTarget") + '/' + text("editPeriod") + '/' + text("editP"), "-1/1/0.1");
}

// P 1.5, I 0.25, D 0.
const QByteArray kGains = report(1, 3, "0000c03f0000803e00000000");

void TestPidFields::keepsWhatIsTyped()
{
    open();
    type("editP", "3.0");
    type("editI", "4.0"); // P has no focus any more
    receive(kGains);
    QCOMPARE(shownGains(), "3.0/4.0/0.567");
    select(2); // has nothing typed
    QCOMPARE(shownGains(), "0.000/0.000/0.000");
    receive(report(2, 3, "0000803f0000803f0000803f") + kGains);
    QCOMPARE(shownGains(), "1/1/1");
    select(1);
    QCOMPARE(shownGains(), "3.0/4.0/0.567");
    click("btnSendPid"); // one set, as it is seen
    QCOMPARE(m_board->read(23).mid(10, 12), hex("0000404000008040e926113f"));
}

void TestPidFields::showsReportsAgainAfter_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<QString>("shown");
    QTest::newRow("sending") << int(Qt::Key_Return) << "3.0/0.567/0.567";
    QTest::newRow("Esc") << int(Qt::Key_Escape) << "1.5/0.25/0"; // what was held back
}

void TestPidFields::showsReportsAgainAfter()
{
    QFETCH(int, key);
    QFETCH(QString, shown);
    open();
    type("editP", "3.0");
    if (key == Qt::Key_Escape)
        receive(kGains);
    QTest::keyClick(child<QLineEdit>("editP"), Qt::Key(key));
    QCOMPARE(shownGains(), shown);
    receive(kGains);
    QCOMPARE(shownGains(), "1.5/0.25/0");
    select(2);
    select(1);
    QCOMPARE(shownGains(), "1.500/0.250/0.000");
}

void TestPidFields::keepsIntegersThatAreTyped()
{
    type("editTarget", "12");
    type("editPeriod", "5");
    click("btnSendTarget"); // the port is closed: still not sent
    receive(report(1, 1, "63000000") + report(1, 6, "64000000"));
    QCOMPARE(text("editTarget") + '/' + text("editPeriod"), "12/5");
    open();
    QTest::keyClick(child<QLineEdit>("editTarget"), Qt::Key_Return);
    receive(report(1, 1, "63000000") + report(1, 6, "64000000"));
    QCOMPARE(text("editTarget") + '/' + text("editPeriod"), "99/5");
    QTest::keyClick(child<QLineEdit>("editPeriod"), Qt::Key_Escape);
    QCOMPARE(text("editPeriod"), "100");
}

void TestPidFields::takesPastedText_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("pasted");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("notice");
    QTest::newRow("blanks") << "editP"
                            << " \t3.25 \n"
                            << "3.25"
                            << "";
    QTest::newRow("integer") << "editTarget"
                             << " -300 "
                             << "-300"
                             << "";
    QTest::newRow("no decimal") << "editP"
                                << "3,25"
                                << ""
                                << "P、I、D值只能是小数，例如：3.25";
    QTest::newRow("no integer") << "editTarget"
                                << "3.5"
                                << ""
                                << "目标值只能是整数，例如：300";
    QTest::newRow("nothing") << "editD"
                             << ""
                             << ""
                             << "P、I、D值为空或不完整，未发送！";
    QTest::newRow("no target") << "editTarget"
                               << ""
                               << ""
                               << "目标值为空或不完整，未发送！";
}

void TestPidFields::takesPastedText()
{
    QFETCH(QString, field);
    QFETCH(QString, pasted);
    QFETCH(QString, shown);
    QFETCH(QString, notice);
    auto *edit = child<QLineEdit>(qPrintable(field));
    edit->selectAll();
    QTest::keyClick(edit, Qt::Key_Delete);
    edit->insert(pasted); // as pasting does
    QCOMPARE(edit->text(), shown);
    if (pasted.isEmpty() || !shown.isEmpty())
        QTest::keyClick(edit, Qt::Key_Return);
    QCOMPARE(m_notices->isEmpty() ? QString() : lastNotice(), notice);
}

void TestPidFields::followsStartAndStop()
{
    open();
    receive(report(1, 2, "01000000")); // before any start: absolute time
    const double absolute = (plot()->graph(5)->data()->constEnd() - 1)->key;
    QVERIFY(qAbs(absolute - double(QDateTime::currentMSecsSinceEpoch()) / 1000) < 5);
    receive(report(4, 4));
    QCOMPARE(startText(), kRunning);
    QCOMPARE(points(5), 0); // their keys would be fifty years away
    receive(report(1, 2, "01000000"));
    QVERIFY((plot()->graph(5)->data()->constEnd() - 1)->key < 5);
    receive(report(4, 5));
    QCOMPARE(startText(), kIdle);
    click("btnPidClear");
    receive(report(4, 4) + report(1, 2, "01000000"));
    const double t = (plot()->graph(5)->data()->constEnd() - 1)->key;
    QVERIFY(t >= 0 && t < 60); // on the same axis
}

void TestPidFields::plotsActualValues()
{
    receive(report(3, 1, "64000000") + report(3, 2, "00000080") + report(3, 2, "ffffff7f") +
            report(6, 2, "01000000") + report(3, 2, "05000000"));
    QCOMPARE(points(2), 2); // the run ended at channel 6
    receive({});
    QCOMPARE(points(2), 3);
    QCOMPARE(points(7), 3);
    QCOMPARE(plot()->graph(2)->data()->constBegin()->value, 100.0);
    QCOMPARE(plot()->graph(7)->data()->constBegin()->value, -2147483648.0);
    QTRY_COMPARE(child<QLabel>("curveValue7")->text(), "5");
    QCOMPARE(child<QLabel>("curveValue2")->text(), "100");
    QCOMPARE(plot()->yAxis->range(), QCPRange(-2147483648.0, 2147483647.0));
    QCOMPARE(plot()->xAxis->range().size(), 10.0);
    click("checkCurve7");
    QVERIFY(!plot()->graph(7)->visible());
    click("btnPidClear");
    QCOMPARE(points(7), 0);
    QVERIFY(!plot()->graph(7)->visible());
    QCOMPARE(plot()->graph(9)->pen().color(), QColor(0x42, 0x00, 0x80));
}

void TestPidFields::addsNothingWhileStopped()
{
    click("checkPidStopShow");
    receive(report(1, 2, "01000000") + report(1, 1, "09000000"));
    QCOMPARE(points(5), 0);
    QCOMPARE(text("editTarget"), ""); // the run ended; the rest waits
    receive({});
    QCOMPARE(text("editTarget"), "9");
    for (int i = 0; i < 1000; ++i) // what waits does not pile up
        receive(report(1, 2, "01000000").repeated(10));
    click("checkPidStopShow");
    receive({});
    QVERIFY(points(5) < 20);
}

void TestPidFields::startsAfreshWhenOpened()
{
    receive(hex("4f52564e010000000000000000")); // a length of 0
    receive(report(1, 1, "09000000"));
    const auto told = QStringLiteral("收到长度异常的数据帧，后续数据无法解析，请重新打开串口！");
    QTRY_VERIFY(!m_notices->isEmpty() && m_notices->last().at(0).toString() == told);
    receive(report(1, 1, "09000000"));
    QCOMPARE(text("editTarget"), ""); // it stays in front
    open();
    receive(report(1, 1, "09000000"));
    QCOMPARE(text("editTarget"), "9");
}

void TestPidFields::skipsAFalseLength()
{
    receive(hex("4f52564e01ffffff7f0200000000") + report(1, 2, "07000000") + report(1, 1, "09000000"));
    QCOMPARE(text("editTarget"), "");
    QTRY_COMPARE(text("editTarget"), "9");
    QCOMPARE(points(5), 0); // too late to be now
    receive(report(1, 2, "07000000"));
    QCOMPARE(points(5), 1);
}

QTEST_MAIN(TestPidFields)
#include "test_pid_fields.moc"
