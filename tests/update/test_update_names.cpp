// Version numbers, and package names that others chose.

#include "appversion.h"
#include "packagename.h"
#include "versionnumber.h"

#include <QtTest>

class TestUpdateNames : public QObject
{
    Q_OBJECT

private slots:
    void numbersVersions_data();
    void numbersVersions();
    void offersTheNextVersion();
    void takesPlainNames_data();
    void takesPlainNames();
};

void TestUpdateNames::numbersVersions_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<quint64>("number");
    QTest::newRow("next") << "1.0.2.7" << Q_UINT64_C(0x01000207);
    QTest::newRow("own") << "1.0.2.6" << Q_UINT64_C(0x01000206);
    QTest::newRow("three parts") << "1.0.3" << Q_UINT64_C(0x010003);
    QTest::newRow("two parts") << "9.9" << Q_UINT64_C(0);
    QTest::newRow("nothing") << "" << Q_UINT64_C(0);
    QTest::newRow("above a signed number") << "128.0.0.0" << Q_UINT64_C(0x80000000);
    QTest::newRow("five parts") << "1.0.2.7.0" << Q_UINT64_C(0x0100020700);
    QTest::newRow("ten parts") << "9.9.1.2.3.4.5.6.7.8" << Q_UINT64_C(0x0102030405060708);
    QTest::newRow("no numbers") << "a.b.c.7" << Q_UINT64_C(7);
    QTest::newRow("below zero") << "-1.0.0.0" << Q_UINT64_C(0);
    QTest::newRow("large parts run over") << "1.0.2.256" << Q_UINT64_C(0x01000300);
}

void TestUpdateNames::numbersVersions()
{
    QFETCH(QString, text);
    QTEST(VersionNumber::fromText(text), "number");
}

// All versions come from the project's.
void TestUpdateNames::offersTheNextVersion()
{
    QCOMPARE(QString(AppVersion::text), QStringLiteral(PROJECT_VERSION));
    QCOMPARE(VersionNumber::fromText(AppVersion::text), VersionNumber::firstNewer - 1);
    QCOMPARE(VersionNumber::fromText(AppVersion::nextText), VersionNumber::firstNewer);
}

void TestUpdateNames::takesPlainNames_data()
{
    QTest::addColumn<QString>("header");
    QTest::addColumn<QString>("name");
    const QString none = "package.bin";
    const auto row = [](const char *header, const QString &name) {
        QTest::newRow(header) << QStringLiteral("attachment; filename=") + QString::fromUtf8(header) << name;
    };
    row("korvex.zip", "korvex.zip");
    row("\"korvex 1.0.zip\"", "korvex 1.0.zip");
    row("korvex.zip; size=3", "korvex.zip");
    row("固件.zip", QStringLiteral("固件.zip"));
    row("../../etc/evil.zip", "evil.zip");
    row("..\\..\\evil.zip", "evil.zip");
    row("C:\\Windows\\evil.zip", "evil.zip");
    row("C:evil.zip", "C_evil.zip");
    row("evil.zip:stream", "evil.zip_stream");
    row("a\"b'c|d?.zip", "a_b_c_d_.zip");
    row("evil.zip. . ", "evil.zip");
    row(".zip", ".zip");
    row("", none);
    row("\"\"", none);
    row("\"unfinished.zip", "unfinished.zip");
    row(".", none);
    row("..", none);
    row("a/..", none);
    row("folder/", none);
    row("nul.zip", none);
    row("COM1", none);
    row("com1.tar.zip", none);
    row("LPT9 .zip", none);
    row("CONSOLE.zip", "CONSOLE.zip");
    QTest::newRow("zero") << QStringLiteral("filename=a") + QChar(0) + "b\n.zip"
                          << "a_b_.zip";
    QTest::newRow("long") << "filename=" + QString(147, 'n') + ".zip" << none;
    QTest::newRow("no header") << QString() << none;
    QTest::newRow("no name") << "attachment" << none;
}

void TestUpdateNames::takesPlainNames()
{
    QFETCH(QString, header);
    QTEST(PackageName::fromHeader(header), "name");
}

QTEST_APPLESS_MAIN(TestUpdateNames)
#include "test_update_names.moc"
