// Archives of all sorts: what is taken out of good ones, and that bad ones are
// refused before anything is written.

#include "package.h"
#include "zipmaker.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <sstream>

class TestPackage : public QObject
{
    Q_OBJECT

private slots:
    void takesArchivesOfOthers_data();
    void takesArchivesOfOthers();
    void takesEmptyFlash();
    void leavesOutWhatIsTheUsers();
    void refusesNames_data();
    void refusesNames();
    void refusesArchives_data();
    void refusesArchives();
    void refusesCutArchives();
};

namespace {

const ZipPart kApp{"App", "application", 0100755};

// The paths with '*' for executables, or why there are none.
QString listing(const QByteArray &archive)
{
    std::istringstream stream(archive.toStdString());
    ZipReader reader(stream);
    Package package;
    std::string problem;
    if (!reader.open(problem) || !package.check(reader, "App", problem))
        return QStringLiteral("! ") + QString::fromStdString(problem);
    QStringList paths;
    for (const Package::File &file : package.files())
        paths += QString::fromStdString(file.path) + (file.executable ? QStringLiteral("*") : QString());
    return paths.join(QLatin1Char(' '));
}

} // namespace

// As a maker of packages would make them; whatever the order of the files.
void TestPackage::takesArchivesOfOthers_data()
{
    QTest::addColumn<QString>("command"); // in a folder that holds the folder "K"
    QTest::newRow("zip") << "cd K && zip -qr ../p.zip .";
    QTest::newRow("zip, one folder") << "zip -qr p.zip K";
    QTest::newRow("zip, to a pipe") << "zip -qr - K | cat > p.zip";
    QTest::newRow("cmake, as cpack does") << "cmake -E tar cf p.zip --format=zip K";
    QTest::newRow("python") << "python3 -m zipfile -c p.zip K/App K/lib K/中文.txt";
}

void TestPackage::takesArchivesOfOthers()
{
#ifdef Q_OS_WIN
    QSKIP("needs a shell and its tools");
#endif
    QFETCH(QString, command);
    const QTemporaryDir folder;
    QProcess shell;
    shell.setWorkingDirectory(folder.path());
    shell.start(QStringLiteral("sh"),
                {QStringLiteral("-ec"),
                 QStringLiteral("mkdir -p K/lib; seq 30000 > K/App; chmod 755 K/App; echo a > K/lib/a; "
                                "chmod 644 K/lib/a; echo b > K/中文.txt; ") +
                     command});
    QVERIFY(shell.waitForFinished());
    QCOMPARE(shell.exitCode(), 0);
    QFile archive(folder.filePath(QStringLiteral("p.zip")));
    QVERIFY(archive.open(QIODevice::ReadOnly));
    QStringList paths = listing(archive.readAll()).split(QLatin1Char(' '));
    paths.sort();
    QCOMPARE(paths.join(QLatin1Char(' ')), QStringLiteral("App* lib/a 中文.txt"));
}

// Which deflate packs as densely as anything can be.
void TestPackage::takesEmptyFlash()
{
    QCOMPARE(listing(makeZip({kApp, {"flash.bin", QByteArray(32 << 20, '\xFF')}})), "App* flash.bin");
}

void TestPackage::leavesOutWhatIsTheUsers()
{
    QCOMPARE(listing(makeZip({kApp,
                              {"conf/config.ini", "x"},
                              {"TMP/x", "x"},
                              {"download", "x"},
                              {"save/a/b", "x"},
                              {"empty/", "", 040755, false},
                              {"lib/save/x", "x"},
                              {"unzip.exe", "x"}})),
             QStringLiteral("App* lib/save/x unzip.exe*"));
}

void TestPackage::refusesNames_data()
{
    QTest::addColumn<QByteArray>("name");
    for (const char *name : {"../x",
                             "a/../x",
                             "..",
                             ".",
                             "./x",
                             "a/./x",
                             "/x",
                             "//host/x",
                             "a//x",
                             "\\x",
                             "a\\x",
                             "..\\x",
                             "C:x",
                             "C:/x",
                             "x:stream",
                             "CON",
                             "con.txt",
                             "lib/NUL",
                             "aux .txt",
                             "Com1.dll",
                             "LPT\xC2\xB9",
                             "conin$",
                             "x.",
                             "x ",
                             "x./y",
                             "x /y",
                             "x\ny",
                             "x\x7F",
                             "x?",
                             "x*",
                             "x|y",
                             "x<",
                             "x>",
                             "x\"",
                             "\xFF",
                             "\xC0\xAE",
                             "\xED\xA0\x80",
                             "\xE4\xB8",
                             "_update/journal",
                             "_Update/x",
                             "app",
                             "App",
                             "App/x",
                             "LIB/b",
                             "lib/A"})
        QTest::newRow(QByteArray(name).toPercentEncoding()) << QByteArray(name);
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("zero byte") << QByteArray("x\0y", 3);
    QTest::newRow("too long") << QByteArray(300, 'x');
}

void TestPackage::refusesNames()
{
    QFETCH(QByteArray, name);
    const QString shown = listing(makeZip({kApp, {"lib/a", "x"}, {name, "x"}}));
    QVERIFY2(shown.startsWith(QStringLiteral("! 升级包中有")), qPrintable(shown));
}

// An archive whose program contains, as it is, an entry of the directory.
static QByteArray nested()
{
    const auto directoryAt = [](const QByteArray &zip) { return zip.indexOf("PK\x01\x02"); };
    const QByteArray inner = makeZip({{"lib/b", "b"}});
    const int innerAt = 30 + kApp.name.size(); // behind the header of the program
    QByteArray outer = makeZip({{kApp.name, inner.left(directoryAt(inner)), kApp.unixMode, false}});
    QByteArray record = inner.mid(directoryAt(inner));
    record.chop(22);
    record[42] = static_cast<char>(innerAt);
    QByteArray end = outer.right(22);
    end[8] = end[10] = 2;
    end[12] = static_cast<char>(end.at(12) + record.size());
    // The first directory of the outer archive is behind the inner entry.
    outer.chop(22);
    return outer + record + end;
}

void TestPackage::refusesArchives_data()
{
    QTest::addColumn<QByteArray>("archive");
    QTest::addColumn<QString>("why");
    const auto lying = [](const std::function<void(ZipLies &)> &lie) {
        ZipLies lies;
        lie(lies);
        return makeZip({kApp, {"lib/a", "x"}}, lies);
    };
    const auto damaged = QStringLiteral("升级包已损坏");
    const auto unsupported = QStringLiteral("不支持的压缩格式");
    const auto special = QStringLiteral("升级包中有链接或特殊文件");
    const auto tooLarge = QStringLiteral("升级包解压后过大");
    QTest::newRow("nothing") << QByteArray() << "升级包不是ZIP文件";
    QTest::newRow("a page") << QByteArray(5000, '<') << "升级包不是ZIP文件";
    QTest::newRow("no entries") << makeZip({}) << "升级包中没有程序文件";
    QTest::newRow("another program") << makeZip({{"Other", "x"}}) << "升级包中没有程序文件";
    QTest::newRow("two folders down") << makeZip({{"a/b/App", "x"}}) << "升级包中没有程序文件";
    QTest::newRow("beside the folder") << makeZip({{"a/App", "x"}, {"b", "x"}}) << "升级包中没有程序文件";
    QTest::newRow("link") << makeZip({kApp, {"lib", "/etc", 0120777}}) << special;
    QTest::newRow("pipe") << makeZip({kApp, {"pipe", "", 010644, false}}) << special;
    QTest::newRow("link of Windows") << lying([](auto &l) { l.dosAttributes = 0x400; }) << special;
    QTest::newRow("encrypted") << lying([](auto &l) { l.flags = 1; }) << "升级包已加密";
    QTest::newRow("AES") << lying([](auto &l) { l.method = 99; }) << "升级包已加密";
    QTest::newRow("LZMA") << lying([](auto &l) { l.method = 14; }) << unsupported;
    QTest::newRow("names differ") << lying([](auto &l) { l.headerName = "../"; }) << damaged;
    QTest::newRow("wrong sum") << lying([](auto &l) { l.crcError = 1; }) << damaged;
    QTest::newRow("said to be shorter") << lying([](auto &l) { l.size = 10; }) << damaged;
    QTest::newRow("said to be longer") << lying([](auto &l) { l.size = 12; }) << damaged;
    QTest::newRow("said to be stored") << lying([](auto &l) { l.method = 0; }) << damaged;
    QTest::newRow("shared bytes") << lying([](auto &l) { l.sharedBytes = true; }) << damaged;
    QTest::newRow("behind something") << "MZ" + makeZip({kApp}) << damaged;
    QTest::newRow("before something") << makeZip({kApp}) + "x"
                                      << "升级包不是ZIP文件";
    QTest::newRow("said to be huge") << lying([](auto &l) { l.size = 3LL << 30; }) << tooLarge;
    QTest::newRow("one in another") << nested() << damaged;
    QByteArray many = makeZip({kApp});
    many.replace(many.size() - 14, 4, "\x21\x4E\x21\x4E"); // 20001 entries
    QTest::newRow("many entries") << many << "升级包中的文件过多";
}

void TestPackage::refusesArchives()
{
    QFETCH(QByteArray, archive);
    QFETCH(QString, why);
    const QString shown = listing(archive);
    QVERIFY2(shown.startsWith(QStringLiteral("! ") + why), qPrintable(shown));
}

// At every place, and with every byte changed: refused, or harmless (times,
// attributes).
void TestPackage::refusesCutArchives()
{
    const QByteArray archive = makeZip({kApp, {"lib/a", "stored", 0100644, false}});
    const QString whole = QStringLiteral("App* lib/a");
    QCOMPARE(listing(archive), whole);
    for (int i = 0; i < archive.size(); ++i) {
        QVERIFY(listing(archive.left(i)).startsWith(QLatin1Char('!')));
        QByteArray changed = archive;
        changed[i] = static_cast<char>(changed[i] ^ 0x55);
        const QString shown = listing(changed).remove(QLatin1Char('*'));
        QVERIFY2(shown.startsWith(QLatin1Char('!')) || shown == QStringLiteral("App lib/a"),
                 qPrintable(shown));
    }
}

QTEST_GUILESS_MAIN(TestPackage)
#include "test_package.moc"
