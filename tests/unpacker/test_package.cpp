// What is read from good archives, and that bad ones are refused before anything
// is written.

#include "package.h"
#include "testfiles.h"
#include "zipmaker.h"

#include <QtTest>

#include <sstream>

namespace {

const ZipPart kApp{"App", "application", 0100755};
const QByteArray
    kExtremes("\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");

QByteArray lyingZip(const QVector<ZipPart> &parts, const std::function<void(ZipLies &)> &lie)
{
    ZipLies lies;
    lie(lies);
    return makeZip(parts, lies);
}

// The paths with '*' for executables, or why there are none.
QString listing(const QByteArray &archive, quint64 *size = nullptr)
{
    std::istringstream stream(archive.toStdString());
    ZipReader reader(stream);
    Package package;
    std::string problem;
    if (!reader.open(problem) || !package.check(reader, "App", problem))
        return QString("! ") + QString::fromStdString(problem);
    if (size)
        *size = package.size();
    QStringList paths;
    for (const Package::File &file : package.files())
        paths += QString::fromStdString(file.path) + (file.executable ? QString("*") : QString());
    return paths.join(QLatin1Char(' '));
}

// An archive whose program contains, as it is, an entry of the directory.
QByteArray nested()
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

} // namespace

class TestPackage : public QObject
{
    Q_OBJECT

private slots:
    // Deflate packs it as densely as possible.
    void readsEmptyFlash()
    {
        QCOMPARE(listing(makeZip({kApp, {"flash.bin", QByteArray(4 << 20, '\xFF')}})), "App* flash.bin");
    }

    // Packed, too, it ends at and around the end of a piece of 64 KB.
    void readsWhatCannotBePacked()
    {
        for (int size = 65490; size < 65560; ++size)
            QCOMPARE(listing(makeZip({kApp, {"x", patternBytes(size)}})), "App* x");
    }

    void readsEntriesInAnyOrder()
    {
        const QByteArray zip = makeZip({kApp, {"lib/a", "x"}});
        const int first = zip.indexOf("PK\x01\x02"), second = zip.lastIndexOf("PK\x01\x02");
        QCOMPARE(listing(zip.left(first) + zip.mid(second).chopped(22) + zip.mid(first, second - first) +
                         zip.right(22)),
                 "lib/a App*");
    }

    void leavesOutFilesOfTheUser()
    {
        quint64 size = 0;
        QCOMPARE(listing(makeZip({kApp,
                                  {"conf/config.ini", "x"},
                                  {"TMP/x", "x"},
                                  {"download", "x"},
                                  {"save/a/b", "x"},
                                  {"empty/", "", 040755, false},
                                  {"lib/save/x", "x"},
                                  {kExtremes, "x"},
                                  {"empt", "x"},
                                  {"lib/b b", "x"},
                                  {"command.com", "x"},
                                  {"com10", "x"},
                                  {"lpta", "x"},
                                  {"unzip.exe", "x"}}),
                         &size),
                 "App* lib/save/x " + QString(kExtremes) + " empt lib/b b command.com com10 lpta unzip.exe*");
        QCOMPARE(size, quint64(kApp.content.size() + 8));
        QCOMPARE(listing(makeZip({{"K/", "", 040755, false}, {"K/App", "x"}, {"K/lib/a", "x"}})),
                 "App* lib/a");
    }

    void refusesNames()
    {
        QList<QByteArray> names =
            QByteArray(
                "../x a/../x .. . ./x a/./x /x //host/x a//x \\x a\\x ..\\x C:x C:/x x:stream CON con.txt "
                "lib/NUL Com1.dll LPT\xC2\xB9 conin$ x. x./y x\x7F x? x* x|y x< x> x\" \xFF \xC0\xAE "
                "\xED\xA0\x80 \xE0\x9F\xBF \xF0\x8F\xBF\xBF \xF4\x90\x80\x80 \xF5\x80\x80\x80 \xC2\xC0 "
                "\xE4\xB8 _update/journal _Update/x app App App/x LIB/b lib/A Z a// com0 lpt9 \x80 \xC2x")
                .split(' ');
        names << "aux .txt"
              << "x "
              << "x /y"
              << "x\ny"
              << "" << QByteArray("x\0y", 3) << QByteArray(300, 'x');
        for (const QByteArray &name : names) {
            const QString shown = listing(makeZip({kApp, {"lib/a", "x"}, {"z", "x"}, {name, "x"}}));
            QVERIFY2(shown.startsWith(QString("! 升级包中有")), name.toPercentEncoding());
        }
    }

    void refusesArchives()
    {
        const auto row = [](const char *name, const QByteArray &archive, const QString &why) {
            const QString shown = listing(archive);
            QVERIFY2(shown.startsWith("! " + why), qPrintable(name + (": " + shown)));
        };
        const auto lying = [](const std::function<void(ZipLies &)> &lie) {
            return lyingZip({kApp, {"lib/a", "x"}}, lie);
        };
        const auto damaged = QString("升级包已损坏");
        const auto unsupported = QString("不支持的压缩格式");
        const auto special = QString("升级包中有链接或特殊文件");
        const auto tooLarge = QString("升级包解压后过大");
        const auto none = QString("升级包中没有程序文件");
        const auto noZip = QString("升级包不是ZIP文件");
        const auto encrypted = QString("升级包已加密");
        row("nothing", QByteArray(), noZip);
        row("a page", QByteArray(5000, '<'), noZip);
        row("before something", makeZip({kApp}) + "x", noZip);
        row("nothing before something", makeZip({}) + "x", noZip);
        row("no entries", makeZip({}), none);
        row("two folders down", makeZip({{"a/b/App", "x"}}), none);
        row("beside the folder", makeZip({{"a/App", "x"}, {"b", "x"}}), none);
        row("link", makeZip({kApp, {"lib", "/etc", 0120777}}), special);
        row("pipe", makeZip({kApp, {"pipe", "", 010644, false}}), special);
        row("link of Windows", lying([](auto &l) { l.dosAttributes = 0x400; }), special);
        for (const int bit : {0, 6, 13})
            row("encrypted", lying([bit](auto &l) { l.flags = quint16(1 << bit); }), encrypted);
        row("patch", lying([](auto &l) { l.flags = 1 << 5; }), unsupported);
        row("AES", lying([](auto &l) { l.method = 99; }), encrypted);
        row("LZMA", lying([](auto &l) { l.method = 14; }), unsupported);
        row("names differ", lying([](auto &l) { l.headerName = "../"; }), damaged);
        row("wrong sum", lying([](auto &l) { l.crcError = 1; }), damaged);
        row("said to be shorter", lying([](auto &l) { l.size = 10; }), damaged);
        row("said to be longer", lying([](auto &l) { l.size = 12; }), damaged);
        row("said to be stored", lying([](auto &l) { l.method = 0; }), damaged);
        row("shared bytes", lying([](auto &l) { l.sharedBytes = true; }), damaged);
        row("one in another", nested(), damaged);
        row("behind something", "MZ" + makeZip({kApp}), damaged);
        row("said to be huge", lying([](auto &l) { l.size = 3LL << 30; }), tooLarge);
        row("together too large",
            lyingZip({{"x", patternBytes(2200000)}, kApp}, [](auto &l) { l.size = 1LL << 31; }), tooLarge);
        QByteArray many = makeZip({kApp});
        many.replace(many.size() - 14, 4, "\x21\x4E\x21\x4E"); // 20001 entries
        row("many entries", many, QString("升级包中的文件过多"));
    }

    void acceptsWhatOthersWrite()
    {
        const auto lying = [](const std::function<void(ZipLies &)> &lie, quint32 mode = 0100644) {
            return lyingZip({{"lib/a", "x", mode}, kApp}, lie);
        };
        const QByteArray zeros(12, '\0');
        const QByteArray streamed = lying([](auto &l) { l.flags = 1 << 3; });
        const QByteArray all[] = {
            lying([](auto &l) { l.comment = "PK\x05\x06" + QByteArray(65531, '\0'); }),
            lying([](auto &l) { l.comment = QByteArray(300, '\0'); }),
            lying([](auto &l) { l.extra = QByteArray(300, 'e'); }),
            lying([](auto &l) { l.dosAttributes = 0x21; }),     // read-only, archive
            lying([](auto &) {}, 0644),                         // no type
            lying([](auto &l) { l.madeBy = 0x0014; }, 0120777), // DOS has no types
            QByteArray(streamed).replace(14, 12, zeros)};       // the sizes are behind the bytes
        for (const QByteArray &archive : all)
            QCOMPARE(listing(archive), QString("lib/a App*"));
        QVERIFY(listing(QByteArray(streamed).replace(14, 1, "?")).startsWith("! 升级包已损坏"));
        QVERIFY(listing(lying([](auto &l) { l.madeBy = 0x1314; }, 0120777)).startsWith("! 升级包中有链接"));
    }

    // One field of a header is not what the others say, or stands for ZIP64 or volumes.
    void comparesHeaders()
    {
        const QByteArray good = makeZip({{"lib/a", "xx"}, kApp});
        const int central = good.indexOf("PK\x01\x02"), end = good.size() - 22;
        const QVector<std::pair<int, const char *>> damaged{{0, "00"},         {6, "02"},
                                                            {8, "00"},         {14, "00000000"},
                                                            {18, "00000000"},  {22, "00000000"},
                                                            {central, "00"},   {central + 42, "ffffff7f"},
                                                            {end + 8, "0300"}, {end + 8, "03000300"}};
        const QVector<std::pair<int, const char *>> unsupported{
            {central + 20, "ffffffff"}, {central + 24, "ffffffff"}, {central + 34, "01"},  {end + 4, "01"},
            {end + 8, "ffffffff"},      {end + 12, "ffffffff"},     {end + 16, "ffffffff"}};
        for (const auto &[at, hex] : damaged + unsupported) {
            const QByteArray bytes = QByteArray::fromHex(hex);
            const QString shown = listing(QByteArray(good).replace(at, bytes.size(), bytes));
            const bool isDamaged = damaged.contains({at, hex});
            QVERIFY2(shown == QString(isDamaged ? "! 升级包已损坏" : "! 不支持的压缩格式"),
                     qPrintable(QString::number(at) + shown));
        }
    }

    // Cut at every byte: refused. With any byte changed: refused or harmless (times,
    // attributes).
    void refusesCutArchives()
    {
        const QByteArray archive = makeZip({kApp, {"lib/a", "stored", 0100644, false}});
        const QString whole = QString("App* lib/a");
        QCOMPARE(listing(archive), whole);
        for (int i = 0; i < archive.size(); ++i) {
            QVERIFY(listing(archive.left(i)).startsWith(QLatin1Char('!')));
            QByteArray changed = archive;
            changed[i] = static_cast<char>(changed[i] ^ 0x55);
            const QString shown = listing(changed).remove(QLatin1Char('*'));
            QVERIFY2(shown.startsWith(QLatin1Char('!')) || shown == QString("App lib/a"), qPrintable(shown));
        }
    }
};

QTEST_GUILESS_MAIN(TestPackage)
#include "test_package.moc"
