// Saving where it works and where it can't: full disks, copies that fail,
// links, permissions.

#include "hexreader.h"
#include "hexsaver.h"

#include <QTemporaryDir>
#include <QtTest>

#ifdef Q_OS_UNIX
#include <algorithm>
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

class TestHexSaver : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void replacesAFile();
    void makesAFileThatIsGone();
    void refusesBeforeTouching();
    void flushesBeforeItRemoves();
    void keepsTheOldBytesWhenWritingFails();
    void keepsTheNewBytesWhenTheCopyFails();
    void resolvesLinksAndKeepsPermissions();
    void survivesAFullDisk();
    void readsOrdinaryFilesOnly();

private:
    QString path(const QString &name) const { return m_root->filePath(name); }
    void put(const QString &name, const QByteArray &bytes)
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }
    QByteArray content(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
    }
    QStringList files() const
    {
        return QDir(m_root->path()).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }
    HexSaver::Outcome save(const QString &name, const QByteArray &bytes)
    {
        return m_saver->save(path(name), bytes.size(),
                             [&bytes](QIODevice &device) { return device.write(bytes) == bytes.size(); });
    }

    std::unique_ptr<QTemporaryDir> m_root;
    std::unique_ptr<HexSaver> m_saver;
};

void TestHexSaver::init()
{
    m_root = std::make_unique<QTemporaryDir>();
    m_saver = std::make_unique<HexSaver>();
    put("rom.bin", "old bytes");
}

void TestHexSaver::replacesAFile()
{
    const QByteArray large(9 << 20, 'n'); // several slices
    put("rom.bin.~part", "left over");
    // Whoever is ended in the middle leaves no part of a file under its name.
    bool wasPart = false;
    m_saver->pause = [&](qint64) {
        const QByteArray now = content("rom.bin");
        wasPart |= now != "old bytes" && now != "(no file)" && now != large;
    };
    QVERIFY(save("rom.bin", large).saved);
    QVERIFY(!wasPart);
    QCOMPARE(content("rom.bin"), large);
    QVERIFY(save("rom.bin", QByteArray()).saved);
    QCOMPARE(content("rom.bin"), QByteArray());
    put("rom.bin.~tmp", "left over");
    QVERIFY(save("rom.bin", "new").saved);
    QCOMPARE(content("rom.bin"), QByteArray("new"));
    QCOMPARE(files(), QStringList{"rom.bin"});
}

void TestHexSaver::makesAFileThatIsGone()
{
    QVERIFY(QFile::remove(path("rom.bin")));
    QVERIFY(save("rom.bin", "new").saved);
    QCOMPARE(content("rom.bin"), QByteArray("new"));
    QCOMPARE(files(), QStringList{"rom.bin"});
}

void TestHexSaver::refusesBeforeTouching()
{
    // Room for the temporary file but not for the copy.
    m_saver->freeBytes = [](const QString &) { return qint64(1500000); };
    const HexSaver::Outcome full = save("rom.bin", QByteArray(1000000, 'n'));
    QVERIFY(!full.saved && !full.reason.isEmpty() && !full.consequence.contains(m_root->path()));
    QVERIFY(save("rom.bin", "small").saved);
    put("rom.bin", "old bytes");
    m_saver = std::make_unique<HexSaver>();
    QVERIFY(QDir(m_root->path()).mkdir("rom.bin.~tmp"));
    QVERIFY(!save("rom.bin", "new").saved);
    QVERIFY(QDir(m_root->path()).mkdir("folder"));
    QVERIFY(!save("folder", "new").saved);
    QVERIFY(!save("missing/rom.bin", "new").saved);
    QCOMPARE(content("rom.bin"), QByteArray("old bytes"));
    QCOMPARE(files(), QStringList{"rom.bin"});
}

// Whenever the power goes, whole bytes are on the disk.
void TestHexSaver::flushesBeforeItRemoves()
{
    QStringList flushed;
    int failing = 0;
    m_saver->flush = [&](const QString &fileName) {
        flushed.append(QFileInfo(fileName).fileName() + ": " + files().join(' '));
        return flushed.size() != failing;
    };
    QVERIFY(save("rom.bin", "new").saved);
    QCOMPARE(flushed, (QStringList{"rom.bin.~tmp: rom.bin rom.bin.~tmp",
                                   "rom.bin.~part: rom.bin.~part rom.bin.~tmp"}));
    failing = 3;
    QVERIFY(!save("rom.bin", "newer").saved);
    QCOMPARE(content("rom.bin.~bak"), QByteArray("new"));
    failing = 5;
    QVERIFY(!save("rom.bin", "newest").saved);
    QCOMPARE(content("rom.bin.~tmp"), QByteArray("newest"));
}

void TestHexSaver::keepsTheOldBytesWhenWritingFails()
{
    put("rom.bin.~bak", "another's");
    const auto half = [](QIODevice &device) { return device.write("half") == 4 && false; };
    const HexSaver::Outcome outcome = m_saver->save(path("rom.bin"), 100, half);
    QVERIFY(!outcome.saved);
    QVERIFY2(outcome.consequence.contains(QDir::toNativeSeparators(path("rom.bin.~bak1"))),
             qPrintable(outcome.consequence));
    QCOMPARE(HexSaver::leftoversOf(path("rom.bin")), QStringList{path("rom.bin.~bak1")});
    QCOMPARE(content("rom.bin.~bak1"), QByteArray("old bytes"));
    QCOMPARE(content("rom.bin.~bak"), QByteArray("another's"));
    // Less than was announced is a failure, whatever the writer says.
    put("rom.bin", "newer");
    QVERIFY(!m_saver->save(path("rom.bin"), 100, [](QIODevice &device) { return device.write("half") == 4; })
                 .saved);
    QCOMPARE(content("rom.bin.~bak2"), QByteArray("newer"));
    QCOMPARE(files(), (QStringList{"rom.bin.~bak", "rom.bin.~bak1", "rom.bin.~bak2"}));
}

void TestHexSaver::keepsTheNewBytesWhenTheCopyFails()
{
    QString from, to;
    m_saver->copy = [&](const QString &source, const QString &target) {
        from = source;
        to = target;
        return false;
    };
    const HexSaver::Outcome outcome = save("rom.bin", "new");
    QVERIFY(!outcome.saved);
    QCOMPARE(from, path("rom.bin.~tmp"));
    QCOMPARE(to, path("rom.bin"));
    QCOMPARE(content("rom.bin.~tmp"), QByteArray("new"));
    QCOMPARE(files(), QStringList{"rom.bin.~tmp"});
    QVERIFY(outcome.consequence.contains(path("rom.bin.~tmp")));
    put("rom.bin.~bak", "older");
    QCOMPARE(HexSaver::leftoversOf(path("rom.bin")),
             (QStringList{path("rom.bin.~tmp"), path("rom.bin.~bak")}));
    QVERIFY(QFile::remove(path("rom.bin.~bak")));
    // It is not written over by the next try, which may fail as well.
    QVERIFY(!m_saver->save(path("rom.bin"), 100, [](QIODevice &) { return false; }).saved);
    QCOMPARE(content("rom.bin.~bak"), QByteArray("new"));
}

void TestHexSaver::resolvesLinksAndKeepsPermissions()
{
#ifdef Q_OS_UNIX
    QVERIFY(QDir(m_root->path()).mkdir("real"));
    put("real/rom.bin", "old");
    const auto permissions = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadGroup;
    QVERIFY(QFile::setPermissions(path("real/rom.bin"), permissions));
    QVERIFY(QFile::link("real/rom.bin", path("link.bin")));
    QVERIFY(QFile::link("link.bin", path("twice.bin")));
    QVERIFY(save("twice.bin", "new").saved);
    QVERIFY(QFileInfo(path("twice.bin")).isSymLink() && QFileInfo(path("link.bin")).isSymLink());
    QCOMPARE(content("real/rom.bin"), QByteArray("new"));
    const auto users = QFile::ReadUser | QFile::WriteUser | QFile::ExeUser; // who we are, not who may
    QCOMPARE(QFile::permissions(path("real/rom.bin")) & ~users, QFile::Permissions(permissions));
    // The bits that Qt does not know, and for root the owner.
    const QByteArray real = QFile::encodeName(path("real/rom.bin"));
    const bool root = ::geteuid() == 0;
    QVERIFY(!root || ::chown(real.constData(), 4711, 4712) == 0);
    QCOMPARE(::chmod(real.constData(), 06750), 0);
    const HexSaver::Outcome outcome = save("twice.bin", "newer");
    struct stat state = {};
    QCOMPARE(::stat(real.constData(), &state), 0);
    QVERIFY(outcome.saved && outcome.consequence.isEmpty());
    QCOMPARE(static_cast<int>(state.st_mode & 07777), 06750);
    QVERIFY(!root || (state.st_uid == 4711 && state.st_gid == 4712));
    // To a file that is gone.
    QVERIFY(QFile::remove(path("real/rom.bin")));
    QVERIFY(save("twice.bin", "again").saved);
    QCOMPARE(content("real/rom.bin"), QByteArray("again"));
    QVERIFY(QFileInfo(path("link.bin")).isSymLink());
    QVERIFY(QFile::link("loop.bin", path("loop.bin")));
    QVERIFY(!save("loop.bin", "new").saved);
#endif
}

// Files that may grow no further are what a full disk is to a writer: in the
// middle of the temporary file, and of the copy.
void TestHexSaver::survivesAFullDisk()
{
#ifdef Q_OS_UNIX
    const auto limitFiles = [](rlim_t bytes) {
        ::signal(SIGXFSZ, SIG_IGN);
        rlimit limit{};
        getrlimit(RLIMIT_FSIZE, &limit);
        limit.rlim_cur = std::min(bytes, limit.rlim_max);
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &limit), 0);
    };
    const auto unlimit = qScopeGuard([&] { limitFiles(RLIM_INFINITY); });
    const QByteArray old(300000, 'o');
    const QByteArray larger(500000, 'n');
    put("rom.bin", old);
    limitFiles(400000);
    QVERIFY(save("rom.bin", larger).consequence.contains(path("rom.bin.~bak")));
    QCOMPARE(content("rom.bin.~bak"), old);
    QCOMPARE(files(), QStringList{"rom.bin.~bak"});

    QVERIFY(QFile::rename(path("rom.bin.~bak"), path("rom.bin")));
    limitFiles(RLIM_INFINITY);
    QVERIFY(!m_saver
                 ->save(path("rom.bin"), larger.size(),
                        [&](QIODevice &device) {
                            const bool written = device.write(larger) == larger.size();
                            limitFiles(400000);
                            return written;
                        })
                 .saved);
    QCOMPARE(content("rom.bin.~tmp"), larger); // written, but no room for the copy
    QCOMPARE(files(), QStringList{"rom.bin.~tmp"});
#endif
}

void TestHexSaver::readsOrdinaryFilesOnly()
{
    const auto read = [](const QString &name) {
        HexReader reader;
        if (!reader.open(name))
            return qint64(-1);
        QByteArray block;
        qint64 size = 0;
        while (reader.step(&block) == HexReader::State::Running)
            size += block.size();
        return size;
    };
    QCOMPARE(read(path("rom.bin")), qint64(9));
    put("empty", QByteArray());
    QCOMPARE(read(path("empty")), qint64(0));
    put("large", QByteArray(9000001, 'x'));
    QCOMPARE(read(path("large")), qint64(9000001));
    QCOMPARE(read(path("missing")), qint64(-1));
    QCOMPARE(read(m_root->path()), qint64(-1));
#ifdef Q_OS_LINUX
    QCOMPARE(read("/dev/zero"), qint64(-1));
    QCOMPARE(mkfifo(qPrintable(path("pipe")), 0600), 0);
    QCOMPARE(read(path("pipe")), qint64(-1));
    QVERIFY(read("/proc/self/maps") > 0); // says that it is empty
    read("/proc/kmsg");                   // comes back, though root may read it and it has no end
#endif
}

QTEST_GUILESS_MAIN(TestHexSaver)
#include "test_hexsaver.moc"
