// The configuration file, its two kinds of default, and the skins.

#include "apppaths.h"
#include "korvexresources.h"
#include "settings.h"
#include "skin.h"

#include <QApplication>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

class TestSettings : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void firstStartWritesTheTable();
    void leavesAFileWithGroupsAlone();
    void readsDefaultsForWhatIsMissing();
    void refusesSenselessValues();
    void survivesGarbage_data();
    void survivesGarbage();
    void writesOneValueAtATime();
    void reportsAFileThatCannotBeWritten();
    void restoresTheFirstStart();
    void buildsTheStyleSheetInOrder();
    void unknownSkinLeavesTheProgramUnstyled();

private:
    void writeFile(const QByteArray &content);
    QVariant stored(const char *key);

    std::unique_ptr<QTemporaryDir> m_root;
};

void TestSettings::initTestCase()
{
    initKorvexResources();
}

void TestSettings::init()
{
    m_root = std::make_unique<QTemporaryDir>();
    AppPaths::setRoot(m_root->path());
    AppPaths::makeFolders();
    Settings::instance() = Settings();
}

void TestSettings::writeFile(const QByteArray &content)
{
    QFile file(AppPaths::configFile());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
}

QVariant TestSettings::stored(const char *key)
{
    return QSettings(AppPaths::configFile(), QSettings::IniFormat).value(QLatin1String(key));
}

void TestSettings::firstStartWritesTheTable()
{
    for (const char *folder : {"tmp", "download", "conf"})
        QVERIFY(QFileInfo(m_root->filePath(QLatin1String(folder))).isDir());
    Settings::writeDefaults();
    const QMap<QString, QString> expected{
        {"Common/RecvBackground", "#4b4b4b"},
        {"Common/RecvTextColor", "#f2f2f2"},
        {"Common/SendBackground", "#4b4b4b"},
        {"Common/SendTextColor", "#f2f2f2"},
        {"Common/TextCodec", "1"},
        {"Common/Skin", "0"},
        {"Serialport/BaudRate", "115200"},
        {"Serialport/DataBit", "8"},
        {"Serialport/SotpBit", "1"},
        {"Serialport/Parity", "0"},
        {"NetTools/NetType", "0"},
        {"NetTools/IPAddr", "127.0.0.1"},
        {"NetTools/Port", "8000"},
        {"DAPCfg/OpenUrl", ""},
        {"DAPCfg/Language", "qt_app_zh.qm"},
    };
    const QSettings file(AppPaths::configFile(), QSettings::IniFormat);
    for (auto it = expected.begin(); it != expected.end(); ++it)
        QCOMPARE(file.value(it.key()).toString(), it.value());
    QVERIFY(!file.value("LoRaTool/UpdateUrl").toString().isEmpty());
    QCOMPARE(file.allKeys().size(), expected.size() + 1);

    Settings::load();
    const Settings &s = Settings::instance();
    QCOMPARE(s.serial.baudRate, 115200);
    QCOMPARE(s.closeBehaviour, 0);
    QCOMPARE(s.probe.port, QStringLiteral("SWD"));
    QCOMPARE(s.probe.frequency, QStringLiteral("10HMz"));
    QCOMPARE(s.probe.openUrl, QString());
}

void TestSettings::leavesAFileWithGroupsAlone()
{
    writeFile("[Serialport]\nDataBit=7\n");
    Settings::writeDefaults();
    QCOMPARE(QSettings(AppPaths::configFile(), QSettings::IniFormat).allKeys(),
             QStringList("Serialport/DataBit"));
    Settings::load();
    QCOMPARE(Settings::instance().serial.dataBits, 7);
    QCOMPARE(Settings::instance().serial.baudRate, 115400);

    // A file without any group counts as new.
    writeFile("; nothing\n");
    Settings::writeDefaults();
    QCOMPARE(stored("Serialport/BaudRate").toInt(), 115200);
}

void TestSettings::readsDefaultsForWhatIsMissing()
{
    Settings::instance().probe.chip = QStringLiteral("other");
    Settings::load();
    const Settings &s = Settings::instance();
    QCOMPARE(s.recvBackground, QColor("#4b4b4b"));
    QCOMPARE(s.textCodec, 1);
    QCOMPARE(s.serial.baudRate, 115400);
    QCOMPARE(s.serial.stopBits, 1);
    QCOMPARE(s.network.address, QStringLiteral("127.0.0.1"));
    QCOMPARE(s.network.port, 8000);
    QCOMPARE(s.probe.chip, QStringLiteral("STM32F103RC"));
    QCOMPARE(s.probe.openUrl, QStringLiteral("d:/"));
    QVERIFY(!QFileInfo::exists(AppPaths::configFile())); // reading writes nothing
}

void TestSettings::refusesSenselessValues()
{
    writeFile("[Common]\nRecvBackground=nonsense\nRecvTextColor=#12\nSendTextColor=red\nTextCodec=7\nSkin=x\n"
              "Buffer=-1\n[Serialport]\nBaudRate=-5\nDataBit=99\nSotpBit=abc\nParity=9\n"
              "[NetTools]\nNetType=4\nPort=0\n");
    Settings::load();
    const Settings &s = Settings::instance();
    QCOMPARE(s.recvBackground, QColor("#4b4b4b"));
    QCOMPARE(s.recvTextColor, QColor("#f2f2f2"));
    QCOMPARE(s.sendTextColor, QColor("red"));
    QCOMPARE(s.textCodec, 1);
    QCOMPARE(s.skin, 0);
    QCOMPARE(s.closeBehaviour, 0);
    QCOMPARE(s.serial.baudRate, 115400);
    QCOMPARE(s.serial.dataBits, 8);
    QCOMPARE(s.serial.stopBits, 1);
    QCOMPARE(s.serial.parity, 0);
    QCOMPARE(s.network.type, 0);
    QCOMPARE(s.network.port, 8000);
}

void TestSettings::survivesGarbage_data()
{
    QTest::addColumn<QByteArray>("content");
    QByteArray noise;
    quint32 state = 1;
    for (int i = 0; i < 5000; ++i) {
        state = state * 1664525 + 1013904223;
        noise.append(static_cast<char>(state >> 24));
    }
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("noise") << noise;
    QTest::newRow("one long line") << QByteArray(1000 * 1000, '[');
}

void TestSettings::survivesGarbage()
{
    QFETCH(QByteArray, content);
    writeFile(content);
    Settings::writeDefaults();
    Settings::load();
    QVERIFY(Settings::instance().serial.baudRate == 115200 || Settings::instance().serial.baudRate == 115400);
    QCOMPARE(Settings::instance().recvBackground, QColor("#4b4b4b"));
}

void TestSettings::writesOneValueAtATime()
{
    Settings::writeDefaults();
    QVERIFY(Settings::instance().textCodec.set(0));
    QCOMPARE(stored("Common/TextCodec").toInt(), 0);
    QCOMPARE(stored("Serialport/BaudRate").toInt(), 115200);
}

void TestSettings::reportsAFileThatCannotBeWritten()
{
    AppPaths::setRoot(m_root->filePath("missing/deep"));
    QFile blocker(m_root->filePath("missing")); // a file where a folder is needed
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    QStringList reasons;
    SettingsFile::setFailureHandler([&reasons](const QString &reason) { reasons.append(reason); });
    for (int i = 0; i < 2; ++i)
        QVERIFY(!Settings::instance().textCodec.set(0));
    QCOMPARE(reasons, QStringList(QStringLiteral("程序目录下无法建立文件夹conf"))); // told once
    Settings::load();
    QCOMPARE(Settings::instance().textCodec, 1);

    QVERIFY(blocker.remove()); // the folder is made with the next value
    QVERIFY(Settings::instance().textCodec.set(0));
    QCOMPARE(stored("Common/TextCodec").toInt(), 0);
    AppPaths::setRoot(AppPaths::configFile());
    QVERIFY(!Settings::instance().textCodec.set(1));
    QCOMPARE(reasons.size(), 2);
    SettingsFile::setFailureHandler({});
}

void TestSettings::restoresTheFirstStart()
{
    Settings::writeDefaults();
    Settings::instance().closeBehaviour.set(2);
    Settings::instance().recvFollowsSkin.set(true);
    Settings::instance().skin.set(2);
    Settings::instance().serial.baudRate.set(9600);
    Settings::instance().camera.addressLength.set(4);
    Settings::instance().recentFiles.set({"a.bin"});
    Settings::load();
    QCOMPARE(Settings::instance().closeBehaviour, 2);
    QVERIFY(Settings::restoreDefaults());
    QCOMPARE(Settings::instance().skin, 0);
    QCOMPARE(Settings::instance().serial.baudRate, 115200);
    QCOMPARE(Settings::instance().closeBehaviour, 0);
    QVERIFY(!stored("Common/Buffer").isValid());
    QCOMPARE(Settings::instance().camera.addressLength, 2);
    QVERIFY(!stored("Camera/AddrLength").isValid());
    QVERIFY(!Settings::instance().recvFollowsSkin);
    QVERIFY(stored("HexEdit/RecentFiles").isValid()); // no setting

    AppPaths::setRoot(AppPaths::configFile()); // a file: nothing can be written below it
    Settings::instance().closeBehaviour = 2;
    QVERIFY(!Settings::restoreDefaults()); // and yet, in memory
    QCOMPARE(Settings::instance().closeBehaviour, 0);
    QCOMPARE(Settings::instance().serial.baudRate, 115200);
    QCOMPARE(Settings::instance().recentFiles, QStringList("a.bin"));
}

void TestSettings::buildsTheStyleSheetInOrder()
{
    Settings::instance().recvBackground = QColor(0xAB, 0xCD, 0xEF);
    for (int skin = 0; skin < 3; ++skin) {
        Skin::apply(skin);
        QCOMPARE(stored("Common/Skin").toInt(), skin);
        const QString sheet = qApp->styleSheet();
        QVERIFY(sheet.startsWith("QtTerminalWidget#recvBrowser {background-color: #abcdef; color:#f2f2f2; } "
                                 "QtTextEditInput#textEditSend {background-color:#4b4b4b; color:#f2f2f2; }"));
        QVERIFY(sheet.endsWith("QWidget#widgetSingleSend {background-color:#4b4b4b; }"));
        QFile file(QStringLiteral(":/resources/css/%1.css").arg(Skin::palette().name));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        QVERIFY(bytes.size() > 1000);
        // Stored as GB18030, read as UTF-8: only ASCII is the same in both.
        QVERIFY(std::all_of(bytes.begin(), bytes.end(),
                            [](char c) { return static_cast<unsigned char>(c) < 0x80; }));
        QVERIFY(sheet.contains(QString::fromLatin1(bytes)));
    }
    Skin::apply(2);
    QCOMPARE(Skin::palette().accent, QStringLiteral("#feba3b"));
    Skin::apply(1);
    QCOMPARE(Skin::palette().outline, QColor("#797979"));
}

void TestSettings::unknownSkinLeavesTheProgramUnstyled()
{
    qApp->setStyleSheet(QString());
    Skin::apply(0);
    const QString before = qApp->styleSheet();
    Skin::apply(3);
    QCOMPARE(qApp->styleSheet(), before);
    QCOMPARE(Skin::palette().name, QStringLiteral("default"));
    QCOMPARE(stored("Common/Skin").toInt(), 3);
    Settings::load();
    QCOMPARE(Settings::instance().skin, 3);
}

QTEST_MAIN(TestSettings)
#include "test_settings.moc"
