// The configuration file, its two kinds of default, and the skins.

#include "apppaths.h"
#include "fonts.h"
#include "freshfolder.h"
#include "settings.h"
#include "skin.h"
#include "startup.h"
#include "testfiles.h"

#include <QApplication>
#include <QDir>
#include <QFontDatabase>
#include <QSettings>
#include <QtTest>

class TestSettings : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(Skin::palette().name.isEmpty() && Skin::palette().text == "#333333"); // no skin yet
        const FreshFolder folder;
        Startup::prepare(*qApp);
        QVERIFY(!QApplication::windowIcon().pixmap(16).isNull()); // the resources are there
    }
    void init() { m_root = std::make_unique<FreshFolder>(); }

    void firstStartWritesTheTable()
    {
        for (const char *folder : {"tmp", "download", "conf"})
            QVERIFY(QFileInfo(m_root->filePath(folder)).isDir());
        QCOMPARE(s.probe.port, QString("SW")); // before the file is read
        QCOMPARE(s.probe.frequency, QString("10MHz"));
        Settings::writeDefaults();
        QCOMPARE(stored(), m_firstStart);
        Settings::load();
        QCOMPARE(s.probe.openUrl, QString());
    }

    void leavesAFileWithGroupsAlone()
    {
        QVERIFY(writeFile(AppPaths::configFile(), "[Serialport]\nDataBit=7\n"));
        Settings::writeDefaults();
        QCOMPARE(stored(), QStringList("Serialport/DataBit=7"));
        QVERIFY(writeFile(AppPaths::configFile(), "; a file without any group counts as new\n"));
        Settings::writeDefaults();
        QCOMPARE(stored(), m_firstStart);
    }

    void readsDefaultsForMissingValues()
    {
        s.probe.chip.setForThisRun("other");
        Settings::load();
        QCOMPARE(s.recvBackground, QColor("#4b4b4b"));
        QCOMPARE(s.network.address, QString("127.0.0.1"));
        QCOMPARE(s.probe.chip, QString("STM32F103RC"));
        QCOMPARE(s.probe.port, QString("SWD"));
        QCOMPARE(s.probe.frequency, QString("10HMz"));
        QCOMPARE(s.probe.openUrl, QString("d:/"));
        QVERIFY(!QFileInfo::exists(AppPaths::configFile())); // reading writes nothing
    }

    void refusesValuesOutOfRange()
    {
        const int any = std::numeric_limits<int>::max();
        const std::tuple<const char *, const Setting<int> &, int, int, int> rows[] = {
            // usual, least, most
            {"Common/TextCodec", s.textCodec, 1, 0, 1},
            {"Common/Buffer", s.closeBehaviour, 0, 0, 2},
            {"Common/Skin", s.skin, 0, -any, any}, // an unknown one is kept
            {"Serialport/BaudRate", s.serial.baudRate, 115400, 1, any},
            {"Serialport/DataBit", s.serial.dataBits, 8, 5, 8},
            {"Serialport/SotpBit", s.serial.stopBits, 1, 0, 2},
            {"Serialport/Parity", s.serial.parity, 0, 0, 4},
            {"NetTools/NetType", s.network.type, 0, 0, 2},
            {"NetTools/Port", s.network.port, 8000, 1, 65535},
            {"Camera/AddrLength", s.camera.addressLength, 2, 1, 4},
            {"Camera/ValueLength", s.camera.valueLength, 1, 1, 4},
            {"Camera/NetType", s.camera.type, 0, 0, 3},
            {"Camera/Port", s.camera.port, 8000, 1, 65535},
            {"Camera/DestPort", s.camera.destinationPort, 8000, 1, 65535},
            {"Camera/BaudRate", s.camera.baudRate, 921600, 1, any}};
        for (const auto &[path, setting, usual, least, most] : rows) {
            QCOMPARE(setting.value(), usual);
            for (const auto &[stored, read] :
                 std::initializer_list<std::pair<QVariant, int>>{{least, least},
                                                                 {most, most},
                                                                 {qint64(least) - 1, usual},
                                                                 {qint64(most) + 1, usual},
                                                                 {"abc", usual}}) {
                QSettings(AppPaths::configFile(), QSettings::IniFormat).setValue(path, stored);
                Settings::load();
                QCOMPARE(setting.value(), read);
            }
        }
        QVERIFY(writeFile(
            AppPaths::configFile(),
            "[Common]\nRecvBackground=nonsense\nSendTextColor=red\nRecvFollowsSkin=2\nSendFollowsSkin=1\n"
            "[Pid]\nFitAll=1\n"));
        Settings::load();
        QCOMPARE(s.recvBackground, QColor("#4b4b4b"));
        QCOMPARE(s.sendTextColor, QColor("red"));
        QVERIFY(!s.recvFollowsSkin && s.sendFollowsSkin && s.pid.fitAll);
        QVERIFY(s.recvFollowsSkin.set(true) && s.sendFollowsSkin.set(false));
        Settings::load();
        QVERIFY(s.recvFollowsSkin && !s.sendFollowsSkin);
    }

    void survivesGarbage()
    {
        for (const QByteArray &content : {patternBytes(5000), QByteArray(1000 * 1000, '[')}) {
            QVERIFY(writeFile(AppPaths::configFile(), content));
            Settings::writeDefaults();
            Settings::load();
            QVERIFY(s.serial.baudRate == 115200 || s.serial.baudRate == 115400);
            QCOMPARE(s.recvBackground, QColor("#4b4b4b"));
        }
    }

    void reportsAFileThatCannotBeWritten()
    {
        AppPaths::setRoot(m_root->filePath("missing/deep"));
        QFile blocker(m_root->filePath("missing")); // a file where a folder is needed
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        QStringList reasons;
        SettingsFile::setFailureHandler([&reasons](const QString &reason) { reasons.append(reason); });
        for (int i = 0; i < 2; ++i)
            QVERIFY(!s.textCodec.set(0));
        QCOMPARE(reasons, QStringList("程序目录下无法建立文件夹conf")); // told once
        QCOMPARE(s.textCodec, 0);                                       // for this run
        QVERIFY(blocker.remove()); // the folder is made with the next value
        QVERIFY(s.textCodec.set(0));
        QCOMPARE(stored(), QStringList("Common/TextCodec=0"));
        AppPaths::setRoot(AppPaths::configFile());
        QVERIFY(!s.textCodec.set(1));
        QCOMPARE(reasons.size(), 2);
#ifdef Q_OS_LINUX
        QVERIFY(QDir(m_root->path()).mkdir("full") && QFile::link("/proc", m_root->filePath("full/conf")));
        SettingsFile::setFailureHandler([&reasons](const QString &reason) { reasons.append(reason); });
        AppPaths::setRoot(m_root->filePath("full")); // there is no room in that file system
        QVERIFY(!s.textCodec.set(1));
        QCOMPARE(reasons.last(), QString("磁盘空间不足"));
#endif
        SettingsFile::setFailureHandler({});
    }

    void restoresTheFirstStart()
    {
        const auto changeAll = [this] {
            for (Setting<int> *setting : {&s.closeBehaviour, &s.skin, &s.camera.addressLength})
                setting->set(2 + (setting == &s.camera.addressLength));
            for (Setting<bool> *setting : {&s.recvFollowsSkin, &s.pid.fitAll})
                setting->set(true);
            s.serial.baudRate.set(9600);
            s.recentFiles.set({"a.bin"});
            s.probe.chip.set("other");
        };
        const auto values = [this] {
            return QString("%1 %2 %3 %4 %5 %6 %7 %8")
                .arg(s.closeBehaviour)
                .arg(s.recvFollowsSkin)
                .arg(s.skin)
                .arg(s.serial.baudRate)
                .arg(s.pid.fitAll)
                .arg(s.camera.addressLength)
                .arg(s.recentFiles->join(','), s.probe.chip.value());
        };
        const QString restored = "0 0 0 115200 0 2 a.bin other";
        Settings::writeDefaults();
        changeAll();
        QVERIFY(Settings::restoreDefaults());
        QCOMPARE(values(), restored);
        QStringList expected = m_firstStart + QStringList{"DAPCfg/Chip=other", "HexEdit/RecentFiles=a.bin"};
        expected.sort();
        QCOMPARE(stored(), expected);

        AppPaths::setRoot(AppPaths::configFile()); // a file: nothing can be written below it
        changeAll();
        QVERIFY(!Settings::restoreDefaults()); // for this run
        QCOMPARE(values(), restored);
    }

    void buildsTheStyleSheetInOrder()
    {
        s.recvBackground.setForThisRun(QColor(0xAB, 0xCD, 0xEF));
        for (int skin = 0; skin < 3; ++skin) {
            Skin::apply(skin);
            QVERIFY(stored().contains(QString("Common/Skin=%1").arg(skin)));
            const QString sheet = QString(":/resources/css/%1.css").arg(Skin::palette().name);
            QCOMPARE(qApp->styleSheet(),
                     "QtTerminalWidget#recvBrowser {background-color: #abcdef; color:#f2f2f2; } "
                     "QtTextEditInput#textEditSend {background-color:#4b4b4b; color:#f2f2f2; }" +
                         QString::fromLatin1(contentOf(sheet)) +
                         "QWidget#widgetSingleSend {background-color:#4b4b4b; }");
        }
        s.recvFollowsSkin.setForThisRun(true);
        s.sendFollowsSkin.setForThisRun(true);
        Skin::apply(1);
        QCOMPARE(Skin::palette().outline, QColor("#797979"));
        for (const Setting<QColor> *color : {&s.recvTextColor, &s.sendTextColor})
            QCOMPARE(color->value(), QColor("#333333"));
        for (const Setting<QColor> *color : {&s.recvBackground, &s.sendBackground})
            QCOMPARE(color->value(), QColor(Skin::palette().panel));
    }

    void unknownSkinLeavesTheProgramUnstyled()
    {
        Skin::apply(0);
        const QString before = qApp->styleSheet();
        for (const int skin : {3, -1}) {
            Skin::apply(skin);
            QCOMPARE(qApp->styleSheet(), before);
            QCOMPARE(Skin::palette().name, QString("default"));
            Settings::load();
            QCOMPARE(s.skin, skin);
        }
    }

    void preparesTheProgram()
    {
        Startup::setAttributes();
        for (const auto attribute :
             {Qt::AA_ForceRasterWidgets, Qt::AA_EnableHighDpiScaling, Qt::AA_UseHighDpiPixmaps})
            QVERIFY(QCoreApplication::testAttribute(attribute));
        Skin::apply(1);
        QVERIFY(QDir(m_root->path()).removeRecursively());
        Startup::prepare(*qApp);
        QCOMPARE(Skin::palette().name, QString("default"));
        QVERIFY(QFileInfo(m_root->filePath("tmp")).isDir());
        const QStringList fonts = QFontDatabase().families(QFontDatabase::SimplifiedChinese);
        QVERIFY(fonts.isEmpty() || fonts.contains(QApplication::font().family()));
        const QFont fixed = Fonts::monospace();
        QVERIFY(fixed.fixedPitch() && fixed.pointSize() == 9);
        QCOMPARE(QCoreApplication::applicationName(), QString("Korvex"));
        QVERIFY(!QCoreApplication::applicationVersion().isEmpty() && !QApplication::windowIcon().isNull());
        QCOMPARE(QApplication::font().pointSize(), 9);
        QCOMPARE(QLocale().country(), QLocale::China);
        QCOMPARE(QCoreApplication::translate("QLineEdit", "&Undo"), QStringLiteral("撤销(&U)"));
        QVERIFY(stored() == m_firstStart && s.probe.port == "SWD"); // written, and read
        QCOMPARE(AppPaths::manual(), m_root->filePath("docs/manual/zh_CN.md"));
#ifdef Q_OS_UNIX
        const QString unpacker = m_root->filePath("unzip.exe");
        QVERIFY(writeFile(unpacker, "#!/bin/sh\ncd \"$(dirname \"$0\")\" && echo \"$@\" _up* >> told\n"));
        QVERIFY(QFile::setPermissions(unpacker, QFile::ReadOwner | QFile::ExeOwner));
        Startup::removeUpdateRemains(); // there are none
        QVERIFY(!QTest::qWaitFor([this] { return QFile::exists(m_root->filePath("told")); }, 200));
        QVERIFY(QDir(m_root->path()).mkdir("_update"));
        Startup::removeUpdateRemains();
        QTRY_COMPARE(contentOf(m_root->filePath("told")), QByteArray("--clean Korvex _update\n"));
#endif
        AppPaths::setRoot({});
        QCOMPARE(AppPaths::manual(), QCoreApplication::applicationDirPath() + "/docs/manual/zh_CN.md");
    }

private:
    // "key=value" of all values in the file, sorted.
    static QStringList stored()
    {
        const QSettings file(AppPaths::configFile(), QSettings::IniFormat);
        QStringList lines;
        for (const QString &key : file.allKeys())
            lines += key + '=' + file.value(key).toString();
        lines.sort();
        return lines;
    }

    std::unique_ptr<FreshFolder> m_root;
    Settings &s = Settings::instance();
    const QStringList m_firstStart =
        QString("Common/RecvBackground=#4b4b4b Common/RecvTextColor=#f2f2f2 Common/SendBackground=#4b4b4b "
                "Common/SendTextColor=#f2f2f2 Common/Skin=0 Common/TextCodec=1 "
                "DAPCfg/Language=qt_app_zh.qm DAPCfg/OpenUrl= "
                "LoRaTool/UpdateUrl=https://www.orvane.example/firmware "
                "NetTools/IPAddr=127.0.0.1 NetTools/NetType=0 NetTools/Port=8000 "
                "Serialport/BaudRate=115200 Serialport/DataBit=8 Serialport/Parity=0 Serialport/SotpBit=1")
            .split(' ');
};

QTEST_MAIN(TestSettings)
#include "test_settings.moc"
