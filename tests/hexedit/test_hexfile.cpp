// Opening and saving a file, where it works and where it can't: full disks,
// copies that fail, links, permissions, stopping, changes by other programs.

#include "hexfile.h"
#include "testfiles.h"

#include <QtTest>
#include <optional>

#ifdef Q_OS_UNIX
#include <algorithm>
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

class TestHexFile : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_root = std::make_unique<QTemporaryDir>();
        m_disk = HexSaver::realDisk();
        m_task = std::make_unique<SlicedTask>();
        HexSaver::Disk disk;
        disk.flush = [this](const QString &fileName) { return m_disk.flush(fileName); };
        disk.freeBytes = [this](const QString &folder) { return m_disk.freeBytes(folder); };
        m_file = std::make_unique<HexFile>(m_task.get(), disk);
        connect(m_file.get(), &HexFile::blockRead, this,
                [this](const QByteArray &block) { m_read += block; });
        put("rom.bin", "old bytes");
    }

    void opensAndReloads()
    {
        QVERIFY(open("rom.bin").inPlace);
        QCOMPARE(m_read, QByteArray("old bytes"));
        QCOMPARE(m_file->name(), path("rom.bin"));
        put("rom.bin", QByteArray(9000001, 'x')); // several blocks
        m_read.clear();
        m_file->reload(keepResult());
        QVERIFY(result().done && m_result->consequence.isEmpty());
        QCOMPARE(m_read, content("rom.bin"));
        // What a failed save left is not what the file holds.
        put("left", "new bytes");
        QVERIFY(open("rom.bin", "left").done && !m_result->inPlace && !m_result->consequence.isEmpty());
        QCOMPARE(m_read, QByteArray("new bytes"));
        QCOMPARE(m_file->name(), path("rom.bin"));
        // Another program writes it meanwhile.
        const auto writing =
            connect(m_file.get(), &HexFile::readingBegan, this, [this] { put("rom.bin", "n"); });
        QVERIFY(open("rom.bin").done && !m_result->consequence.isEmpty());
        disconnect(writing);
        m_file->close();
        QVERIFY(!m_file->isOpen());
    }

    void staysWhereOpeningFails()
    {
        QSignalSpy began(m_file.get(), &HexFile::readingBegan);
        put("rom.bin", ":0300300002337A1E\n:00000001FF\n");
        QVERIFY(open("rom.bin").inPlace && m_read == QByteArray("\x02\x33\x7A"));
        QVERIFY(!open("missing").done && m_result->reason == QString("文件不存在"));
        QVERIFY(!open(".").done && m_result->reason == QString("不是普通文件"));
        QCOMPARE(began.size(), 1);
        // Stopped: the file that was open is open again, with what is known of it.
        QFile large(path("large"));
        QVERIFY(large.open(QIODevice::WriteOnly) && large.resize(qint64(1) << 30));
        m_file->open(path("large"), path("large"), keepResult());
        QCOMPARE(m_file->name(), path("large"));
        m_task->stop();
        QVERIFY(!result().done && m_result->reason.isEmpty());
        QCOMPARE(m_file->name(), path("rom.bin"));
        QVERIFY(!m_file->needsConsent());
        // Plain bytes must not be saved over a file of records.
        QCOMPARE(m_file->image().form, HexForm::IntelHex);
        m_file->saveAs(path("missing/new.bin"), plain(), HexImage(), keepResult());
        QVERIFY(!result().done && m_file->image().form == HexForm::IntelHex);
    }

    void savesOverTheFile()
    {
        open("rom.bin");
        const QByteArray large(9 << 20, 'n'); // several slices
        put("rom.bin.~part", "left over");
        // A program that is ended in the middle leaves no part of a file under its name.
        QSemaphore go; // the disk takes its time
        m_disk.flush = [&go](const QString &) {
            go.acquire();
            return true;
        };
        setContent(large);
        m_file->save(plain(), keepResult());
        QVERIFY(m_file->isSaving() && !m_result);
        go.release(100);
        bool wasPart = false;
        while (m_file->isSaving() && !wasPart) {
            QCoreApplication::processEvents();
            const QByteArray now = content("rom.bin");
            wasPart = now != "old bytes" && now != "(no file)" && now != large;
        }
        QVERIFY(!wasPart && result().done && m_result->inPlace);
        QCOMPARE(content("rom.bin"), large);
        QVERIFY(save("rom.bin", QByteArray()).done);
        QCOMPARE(content("rom.bin"), QByteArray());
        put("rom.bin.~tmp", "left over");
        QVERIFY(save("rom.bin", "new").done);
        QCOMPARE(content("rom.bin"), QByteArray("new"));
        QVERIFY(QFile::remove(path("rom.bin")));
        QVERIFY(save("rom.bin", "newer").done);
        QCOMPARE(content("rom.bin"), QByteArray("newer"));
        QCOMPARE(files(), QStringList{"rom.bin"});
        QVERIFY(!save("missing/new.bin", "new").done && m_file->name() == path("rom.bin"));
        put("new.bin.~tmp", "of a save that failed");
        QVERIFY(save("new.bin", "new").done && m_file->isSame(path("./new.bin")));
        QCOMPARE(content("new.bin.~bak"), QByteArray("of a save that failed"));
    }

    void noticesOtherPrograms()
    {
        QSignalSpy changed(m_file.get(), &HexFile::changedOutside);
        open("rom.bin");
        QVERIFY(save("rom.bin", "ours").done);
        m_file->checkOutside();
        QVERIFY(changed.isEmpty() && !m_file->needsConsent()); // our own save is no other program's
        put("rom.bin", "another's");
        QVERIFY(changed.wait(30000));
        QVERIFY(m_file->isChangedOutside() && !m_file->isGone());
        QVERIFY(m_file->needsConsent());
        m_file->giveConsent();
        QVERIFY(!m_file->needsConsent());
        put("rom.bin", "another's again"); // no consent to lose these
        QVERIFY(m_file->needsConsent());
        QVERIFY(QFile::remove(path("rom.bin")));
        m_file->checkOutside();
        QVERIFY(m_file->isGone() && !m_file->needsConsent());
        m_file->close();
        const int before = changed.size();
        put("rom.bin", "back");
        m_file->checkOutside();
        QCOMPARE(changed.size(), before);
    }

    void refusesBeforeTouching()
    {
        // Room for the temporary file but not for the copy.
        m_disk.freeBytes = [](const QString &) { return qint64(1500000); };
        QVERIFY(!save("rom.bin", QByteArray(1000000, 'n')).done);
        QCOMPARE(m_result->reason, QString("磁盘空间不足"));
        QVERIFY(!m_result->consequence.contains(m_root->path()));
        QVERIFY(save("rom.bin", "small").done);
        m_disk = HexSaver::realDisk();
        put("rom.bin", "old bytes");
        QVERIFY(QDir(m_root->path()).mkdir("rom.bin.~tmp"));
        QVERIFY(!save("rom.bin", "new").done);
        QVERIFY(QDir(m_root->path()).mkdir("folder"));
        QVERIFY(!save("folder", "new").done);
        QCOMPARE(content("rom.bin"), QByteArray("old bytes"));
        QCOMPARE(files(), QStringList{"rom.bin"});
    }

    void refusesReadOnlyFiles()
    {
#ifdef Q_OS_UNIX
        constexpr uid_t nobody = 65534; // root may write everything
        const bool isRoot = ::geteuid() == 0;
        const auto rootAgain = qScopeGuard([=] { QVERIFY(!isRoot || ::setresuid(0, 0, 0) == 0); });
        if (isRoot) {
            QCOMPARE(::chown(qPrintable(m_root->path()), nobody, nobody), 0);
            QCOMPARE(::chown(qPrintable(path("rom.bin")), nobody, 4712), 0);
            QCOMPARE(::setresuid(nobody, nobody, 0), 0);
            QVERIFY(save("rom.bin", "new").consequence.endsWith("未能保留原来的用户组"));
        }
        QCOMPARE(::chmod(qPrintable(m_root->path()), 0500), 0);
        QVERIFY(!save("new.bin", "new").done && m_result->reason == QString("文件夹不可写入"));
        QCOMPARE(::chmod(qPrintable(m_root->path()), 0700), 0);
        put("fixed.bin", "old");
        QVERIFY(QFile::setPermissions(path("fixed.bin"), QFile::ReadOwner));
        QVERIFY(!save("fixed.bin", "new").done && m_result->reason == QString("文件为只读"));
        QCOMPARE(content("fixed.bin"), QByteArray("old"));
        QVERIFY(QFile::setPermissions(path("fixed.bin"), QFile::Permissions()));
        QVERIFY(!open("fixed.bin").done && m_result->reason == QString("没有权限"));
#endif
    }

    // Whenever the power goes, complete bytes are on the disk.
    void flushesBeforeItRemoves()
    {
        QStringList flushed;
        int failing = 0;
        bool hasRights = QFile::setPermissions(path("rom.bin"), QFile::Permissions(0x6640));
        m_disk.flush = [&](const QString &fileName) {
            hasRights = hasRights && QFile::permissions(fileName) == QFile::Permissions(0x6640);
            flushed.append(QFileInfo(fileName).fileName() + ": " + files().join(' '));
            return flushed.size() != failing;
        };
        QVERIFY(save("rom.bin", "new").done);
        QCOMPARE(flushed, (QStringList{"rom.bin.~tmp: rom.bin rom.bin.~tmp",
                                       "rom.bin.~part: rom.bin.~part rom.bin.~tmp"}));
        QVERIFY(hasRights); // those of the file, all the time
        failing = 3;
        put("rom.bin.~bak", "another's");
        QVERIFY(!save("rom.bin", "newer").done && !m_result->inPlace);
        QVERIFY(m_result->consequence.contains(QDir::toNativeSeparators(path("rom.bin.~bak1"))));
        QCOMPARE(content("rom.bin.~bak1"), QByteArray("new"));
        QCOMPARE(files(), (QStringList{"rom.bin.~bak", "rom.bin.~bak1"}));
        failing = 5;
        put("rom.bin", "old bytes");
        QVERIFY(!save("rom.bin", "newest").done);
        QCOMPARE(content("rom.bin.~tmp"), QByteArray("newest"));
        QCOMPARE(files(), (QStringList{"rom.bin.~bak", "rom.bin.~bak1", "rom.bin.~tmp"}));
    }

    void stopsBeforeTheOldFileIsGone()
    {
        QSemaphore begun, go;
        m_disk.flush = [&](const QString &) {
            begun.release();
            go.acquire();
            return true;
        };
        open("rom.bin");
        setContent("new");
        m_file->save(plain(), keepResult());
        begun.acquire();
        QVERIFY(m_task->isStoppable());
        put("rom.bin", "another program's"); // unnoticed while we save
        QSignalSpy changed(m_file.get(), &HexFile::changedOutside);
        go.release();
        m_task->stop();
        QVERIFY(!result().done && !m_result->inPlace && m_result->reason.isEmpty());
        QVERIFY(changed.size() == 1 && m_file->isChangedOutside());
        QCOMPARE(content("rom.bin"), QByteArray("another program's"));
        HexSaver(path("rom.bin"), plain(), m_disk).step(); // goes when it has begun to write
        QCOMPARE(files(), QStringList{"rom.bin"});

        m_file->save(plain(), keepResult());
        go.release();
        QVERIFY(QTest::qWaitFor([&] { return begun.available() == 2; }, 30000)); // the copy
        m_task->stop();
        QVERIFY(m_file->isSaving()); // too late
        // The end of the program in the middle of it.
        go.release();
        m_file.reset();
        QCOMPARE(content("rom.bin.~tmp"), QByteArray("new"));
        QCOMPARE(files(), QStringList{"rom.bin.~tmp"});
    }

    void keepsTheNewBytesWhenTheCopyFails()
    {
        QSignalSpy changed(m_file.get(), &HexFile::changedOutside);
        open("rom.bin");
        m_disk.flush = [this](const QString &fileName) { // in the way of the copy
            return !fileName.endsWith("~tmp") || QDir().mkdir(path("rom.bin.~part"));
        };
        QVERIFY(!save("rom.bin", "new").done && !m_result->inPlace);
        QVERIFY(m_result->consequence.contains(path("rom.bin.~tmp")) && changed.isEmpty());
        QCOMPARE(content("rom.bin.~tmp"), QByteArray("new"));
        QCOMPARE(files(), QStringList{"rom.bin.~tmp"});
        // It is not written over by the next try, which may fail as well.
        QVERIFY(QDir().rmdir(path("rom.bin.~part")));
        m_disk.flush = [](const QString &) { return false; };
        QVERIFY(!save("rom.bin", "newer").done);
        QCOMPARE(content("rom.bin.~bak"), QByteArray("new"));
        // All is done but for the temporary file, which can't be removed.
        m_disk.flush = [this](const QString &fileName) {
            return fileName.endsWith("~tmp") ||
                   (QFile::remove(path("rom.bin.~tmp")) && QDir().mkdir(path("rom.bin.~tmp")));
        };
        QVERIFY(!save("rom.bin", "newest").done && m_result->inPlace);
        QVERIFY(m_result->consequence.contains(path("rom.bin.~tmp")));
        QCOMPARE(content("rom.bin"), QByteArray("newest"));
    }

    void resolvesLinksAndKeepsPermissions()
    {
#ifdef Q_OS_UNIX
        QVERIFY(QDir(m_root->path()).mkdir("real"));
        put("real/rom.bin", "old");
        QVERIFY(QFile::link("real/rom.bin", path("link.bin")));
        QVERIFY(QFile::link("link.bin", path("twice.bin")));
        // With the bits that Qt does not know, and for root the owner.
        const QByteArray real = QFile::encodeName(path("real/rom.bin"));
        const bool isRoot = ::geteuid() == 0;
        QVERIFY(!isRoot || ::chown(real.constData(), 4711, 4712) == 0);
        QCOMPARE(::chmod(real.constData(), 06750), 0);
        open("twice.bin");
        m_disk.flush = [](const QString &fileName) { return fileName.endsWith("~tmp"); };
        QVERIFY(!save("twice.bin", "kept beside it").done);
        m_disk = HexSaver::realDisk();
        QVERIFY(save("twice.bin", "new").done && m_result->consequence.isEmpty());
        struct stat state = {};
        QCOMPARE(::stat(real.constData(), &state), 0);
        QCOMPARE(static_cast<int>(state.st_mode & 07777), 06750);
        QVERIFY(!isRoot || (state.st_uid == 4711 && state.st_gid == 4712));
        QCOMPARE(content("real/rom.bin"), QByteArray("new"));
        // To a file that is gone.
        QVERIFY(QFile::remove(path("real/rom.bin")));
        QVERIFY(save("twice.bin", "again").done);
        QCOMPARE(content("real/rom.bin"), QByteArray("again"));
        QVERIFY(QFileInfo(path("twice.bin")).isSymLink() && QFileInfo(path("link.bin")).isSymLink());
        QVERIFY(QFile::link("loop.bin", path("loop.bin")));
        QVERIFY(!save("loop.bin", "new").done);
#endif
    }

    // Files that may grow no further are what a full disk is to a writer: in the
    // middle of the temporary file, and of the copy.
    void survivesAFullDisk()
    {
#ifdef Q_OS_UNIX
        const auto limitFiles = [](rlim_t bytes) {
            ::signal(SIGXFSZ, SIG_IGN);
            rlimit limit{};
            getrlimit(RLIMIT_FSIZE, &limit);
            limit.rlim_cur = std::min(bytes, limit.rlim_max);
            return setrlimit(RLIMIT_FSIZE, &limit) == 0;
        };
        const auto unlimit = qScopeGuard([&] { limitFiles(RLIM_INFINITY); });
        const QByteArray old(300000, 'o');
        const QByteArray larger(500000, 'n');
        put("rom.bin", old);
        QVERIFY(limitFiles(400000));
        QVERIFY(save("rom.bin", larger).consequence.contains(path("rom.bin.~bak")));
        QCOMPARE(content("rom.bin.~bak"), old);
        QCOMPARE(files(), QStringList{"rom.bin.~bak"});

        QVERIFY(QFile::rename(path("rom.bin.~bak"), path("rom.bin")));
        QVERIFY(limitFiles(RLIM_INFINITY));
        m_disk.flush = [&](const QString &) { return limitFiles(400000); };
        QVERIFY(!save("rom.bin", larger).done);
        QCOMPARE(content("rom.bin.~tmp"), larger); // written, but no room for the copy
        QCOMPARE(files(), QStringList{"rom.bin.~tmp"});
#endif
    }

    void readsOrdinaryFilesOnly()
    {
        put("empty", QByteArray());
        QVERIFY(open("empty").done && m_read.isEmpty());
#ifdef Q_OS_LINUX
        QCOMPARE(mkfifo(qPrintable(path("pipe")), 0600), 0);
        QVERIFY(!open("pipe").done && !m_result->inPlace);
        const auto openSystem = [this](const QString &name) {
            m_read.clear();
            m_file->open(name, name, keepResult());
            return result().done;
        };
        QVERIFY(!openSystem("/dev/zero"));
        QVERIFY(!openSystem("/proc/self/mem") && !m_result->reason.isEmpty()); // fails when it is read
        QVERIFY(openSystem("/proc/self/maps") && !m_read.isEmpty());           // says that it is empty
        openSystem("/proc/kmsg"); // comes back, though root may read it and it has no end
#endif
    }

private:
    std::unique_ptr<HexOutput> plain() const
    {
        return std::make_unique<HexPlainOutput>(m_document);
    }
    QString path(const QString &name) const
    {
        return m_root->filePath(name);
    }
    void put(const QString &name, const QByteArray &bytes)
    {
        QVERIFY(writeFile(path(name), bytes));
    }
    QByteArray content(const QString &name) const
    {
        return contentOf(path(name));
    }
    QStringList files() const
    {
        return QDir(m_root->path()).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }
    HexFile::Report keepResult()
    {
        m_result.reset();
        return [this](const HexFile::Result &result) { m_result = result; };
    }
    HexFile::Result result()
    {
        if (!QTest::qWaitFor([this] { return m_result.has_value(); }, 30000))
            return {false, false, "no report", "no report"};
        return *m_result;
    }
    HexFile::Result open(const QString &name, const QString &source = {})
    {
        m_read.clear();
        m_file->open(path(name), path(source.isEmpty() ? name : source), keepResult());
        return result();
    }
    void setContent(const QByteArray &bytes)
    {
        m_document = HexDocument();
        m_document.appendContent(bytes);
    }
    HexFile::Result save(const QString &name, const QByteArray &bytes)
    {
        setContent(bytes);
        m_file->saveAs(path(name), plain(), m_file->image(), keepResult());
        return result();
    }

    std::unique_ptr<QTemporaryDir> m_root;
    std::unique_ptr<SlicedTask> m_task;
    std::unique_ptr<HexFile> m_file;
    HexSaver::Disk m_disk;
    HexDocument m_document;
    QByteArray m_read;
    std::optional<HexFile::Result> m_result;
};

QTEST_GUILESS_MAIN(TestHexFile)
#include "test_hexfile.moc"
