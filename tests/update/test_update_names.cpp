// Version numbers, and package names that others chose.

#include "appversion.h"
#include "packagename.h"
#include "versionnumber.h"

#include <QtTest>

class TestUpdateNames : public QObject
{
    Q_OBJECT

private slots:
    void numbersVersions()
    {
        const std::pair<const char *, quint64> rows[] = {
            {"1.0.2.7", 0x01000207},
            {"1.0.2.6", 0x01000206},
            {"1.0.3", 0x010003},
            {"9.9", 0},
            {"", 0},
            {"128.0.0.0", 0x80000000},
            {"9.9.1.2.3.4.5.6.7.8", 0x0102030405060708}, // the last eight
            {"a.b.c.7", 7},
            {"-1.0.0.0", 0},
            {"1.0.2.256", 0x01000300},
        };
        for (const auto &[text, number] : rows)
            QCOMPARE(VersionNumber::fromText(text), number);
    }

    // All versions come from the project's.
    void offersTheNextVersion()
    {
        QCOMPARE(QString(AppVersion::text), QStringLiteral(PROJECT_VERSION));
        QCOMPARE(VersionNumber::fromText(AppVersion::text), VersionNumber::firstNewer - 1);
        QCOMPARE(VersionNumber::fromText(AppVersion::nextText), VersionNumber::firstNewer);
    }

    void readsPlainNames()
    {
        const auto name = [](const QByteArray &text) {
            return PackageName::fromHeader("attachment; filename=" + QString::fromUtf8(text)).toUtf8();
        };
        const std::pair<QByteArray, QByteArray> rows[] = {
            {"korvex.zip", "korvex.zip"},
            {"\"korvex 1.0.zip\"", "korvex 1.0.zip"},
            {"\"unfinished.zip", "unfinished.zip"},
            {"\" blanks.zip\"", "blanks.zip"},
            {"korvex.zip; size=3", "korvex.zip"},
            {"固件.zip", "固件.zip"},
            {"../../etc/evil.zip", "evil.zip"},
            {"C:\\Windows\\evil.zip", "evil.zip"},
            {"C:evil.zip", "C_evil.zip"},
            {"a\"b'c|d?.zip", "a_b_c_d_.zip"},
            {"a\x01"
             "b\n.zip",
             "a_b_.zip"},
            {"evil.zip. . ", "evil.zip"},
            {"CONSOLE.zip", "CONSOLE.zip"},
            {QByteArray(146, 'n') + ".zip", QByteArray(146, 'n') + ".zip"},
        };
        for (const auto &[header, expected] : rows)
            QCOMPARE(name(header), expected);
        for (const QByteArray &header :
             {QByteArray(), QByteArray("\"\""), QByteArray("."), QByteArray("a/.."), QByteArray("folder/"),
              QByteArray("nul.zip"), QByteArray("COM1"), QByteArray("com1.tar.zip"), QByteArray("LPT9 .zip"),
              QByteArray(147, 'n') + ".zip"})
            QCOMPARE(name(header), QByteArray("package.bin"));
        QCOMPARE(PackageName::fromHeader("attachment"), "package.bin");
    }
};

QTEST_APPLESS_MAIN(TestUpdateNames)
#include "test_update_names.moc"
