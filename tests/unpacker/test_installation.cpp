// Updates of an installation in a folder on a disk that fails at every
// operation in turn: what is left is always the old version or the new one.

#include "faultydisk.h"
#include "installation.h"
#include "testfiles.h"
#include "zipmaker.h"

#include <QtTest>

#include <cerrno>
#include <memory>
#include <sstream>
#include <sys/resource.h>

namespace fs = std::filesystem;

using Tree = QMap<QString, QByteArray>;
Q_DECLARE_METATYPE(FaultyDisk::Fault)

class TestInstallation : public QObject
{
    Q_OBJECT

private slots:
    // In memory where there is such a folder: there is a lot to sync.
    void init()
    {
        const auto memory = QString("/dev/shm");
        m_root = std::make_unique<QTemporaryDir>((QDir(memory).exists() ? memory : QDir::tempPath()) +
                                                 QString("/test_installation-XXXXXX"));
        QVERIFY(m_root->isValid());
        write(folder("unpacker"), "the unpacker");
        m_old = {{"App", "old application"},   {"lib/a", "old a"},        {"lib/b", "old b"},
                 {"own/mine.txt", "mine"},     {"unzip.exe", "unpacker"}, {"conf/config.ini", "settings"},
                 {"download/p.zip", "package"}};
        m_new = m_old;
        m_new["App"] = "new application";
        m_new["lib/a"] = "new a";
        m_new["unzip.exe"] = "new unpacker";
        m_new["plugins/deep/new.txt"] = "new file";
        m_new["lib/new"] = "another";
        makeOld();
    }

    void exchangesFiles()
    {
        Disk disk;
        QVERIFY2(update(disk), m_problem.c_str());
        QCOMPARE(treeAt(folder()), m_new);
        QVERIFY(isExecutable("App") && isExecutable("unzip.exe") && isExecutable("lib/new"));
        QVERIFY(!isExecutable("lib/a"));
    }

    // As a maker of packages would make them, with the files in any order.
    void installsArchivesOfOthers()
    {
        const QString prepare = "cd \"$0\"; mkdir -p K/lib; printf app > K/App; chmod 755 K/App; "
                                "seq 30000 > K/lib/a; printf b > K/中文.txt; rm -f p.zip; ";
        Tree expected = m_old;
        expected["App"] = "app";
        expected[QString("中文.txt")] = "b";
        expected["lib/a"].clear();
        for (int i = 1; i <= 30000; ++i)
            expected["lib/a"] += QByteArray::number(i) + '\n';
        for (const char *command :
             {"cd K && zip -qr ../p.zip .", "zip -qr p.zip K", "zip -qr - K | cat > p.zip",
              "cmake -E tar cf p.zip --format=zip K", "python3 -m zipfile -c p.zip K/App K/lib K/中文.txt"}) {
            QCOMPARE(QProcess::execute("sh", {"-ec", prepare + command, m_root->path()}), 0);
            makeOld();
            FaultyDisk disk(FaultyDisk::None, 0);
            QVERIFY2(update(disk, contentOf(m_root->filePath("p.zip"))), command);
            QCOMPARE(treeAt(folder()), expected);
        }
    }

    void survivesEveryFailure_data()
    {
        QTest::addColumn<FaultyDisk::Fault>("kind");
        QTest::addColumn<bool>("inUse"); // a file, so that the update goes back half the way
        for (const auto &[kind, what] : {std::pair{FaultyDisk::FailsOnce, "one operation fails"},
                                         {FaultyDisk::Killed, "killed"},
                                         {FaultyDisk::LosesAll, "power cut, all unsynced lost"},
                                         {FaultyDisk::LosesEven, "power cut, every other lost"},
                                         {FaultyDisk::LosesOdd, "power cut, the others lost"}}) {
            QTest::newRow(what) << kind << false;
            QTest::addRow("%s, on the way back", what) << kind << true;
        }
    }

    void survivesEveryFailure()
    {
        QFETCH(FaultyDisk::Fault, kind);
        QFETCH(bool, inUse);
        QSet<QString> seen;
        bool failed = true;
        for (int i = 1; failed; ++i) {
            makeOld();
            FaultyDisk disk(kind, i);
            if (inUse)
                disk.hold(folder() / "plugins/deep/new.txt");
            const bool isNew = update(disk);
            disk.cutPower();
            failed = disk.hasFailed();
            seen += stateOf(folder());
            if (!failed)
                QCOMPARE(stateOf(folder()), isNew ? QString("new") : QString("old"));
            QCOMPARE(m_problem.empty(), isNew);
            checkAfterwards(folder(), kind, kind == FaultyDisk::Killed && !inUse);
            if (QTest::currentTestFailed()) {
                qWarning("operation %d", i);
                return;
            }
        }
        QVERIFY(seen.contains("old") && seen.contains("new") != inUse);
        QCOMPARE(seen.contains("halfway"), kind != FaultyDisk::FailsOnce || inUse);
    }

    // Not even the way back is open: neither the new executable can be put in place
    // nor the old one.
    void goesOnWhenTheFileIsFree()
    {
        class Held : public Disk
        {
            std::error_code move(const fs::path &from, const fs::path &to) override
            {
                return to.filename() == "App" && from.filename() != "stub"
                           ? std::make_error_code(std::errc::permission_denied)
                           : Disk::move(from, to);
            }
        } held;
        QVERIFY(!update(held));
        QCOMPARE(stateOf(folder()), QString("halfway"));
        Disk disk;
        QVERIFY(Installation(folder(), "App", disk).finish(m_problem));
        QCOMPARE(treeAt(folder()), m_new);
    }

    void knowsWhenItIsHalfway()
    {
        Disk disk;
        const Installation installation(folder(), "App", disk);
        write(installation.finisher(), m_old["App"]);
        QVERIFY(!installation.isHalfway()); // has not begun
        write(folder() / "_update/journal", "App\n");
        QVERIFY(installation.isHalfway());
        write(installation.finisher(), m_new["App"]); // of the same length
        QVERIFY(!installation.isHalfway());
        fs::remove(installation.finisher());
        QVERIFY(!installation.isHalfway());
        fs::remove(installation.executablePath());
        QVERIFY(!installation.isHalfway());
    }

    void namesTheFileInTheWay()
    {
        for (const char *name : {"lib/a", "plugins/deep/new.txt"}) {
            FaultyDisk disk(FaultyDisk::None, 0);
            disk.hold(folder() / name);
            QVERIFY(!update(disk));
            QCOMPARE(QString::fromStdString(m_problem),
                     QString("无法替换文件：%1：错误 %2").arg(name).arg(EIO));
            QVERIFY(isExecutable("App")); // the old one, as it was copied
        }
    }

    void leavesArrangementsOfTheUser()
    {
        for (const char *command : {"mkdir -p lib/new/x", "mv lib ../elsewhere; ln -s ../elsewhere lib",
                                    "touch plugins", "mv App other; ln -s other App", "rm App"}) {
            makeOld();
            QCOMPARE(QProcess::execute(
                         "sh", {"-ec", QString("cd \"$0\"; ") + command, QString::fromStdString(folder())}),
                     0);
            const Tree before = treeAt(folder());
            Disk disk;
            QVERIFY2(!update(disk) && !m_problem.empty(), command);
            QCOMPARE(treeAt(folder()), before);
            QVERIFY(!fs::exists(folder() / "_update"));
        }
    }

    void tellsWhetherAProgramStarts()
    {
        QVERIFY(Platform::start("/bin/true", {}));
        QVERIFY(!Platform::start(folder() / "nothing", {}));
        rlimit before{};
        getrlimit(RLIMIT_NOFILE, &before);
        const rlimit none{0, before.rlim_max};
        setrlimit(RLIMIT_NOFILE, &none);
        const bool started = Platform::start("/bin/true", {});
        setrlimit(RLIMIT_NOFILE, &before);
        QVERIFY(!started);
    }

    void letsOneWorkInAFolder()
    {
        Platform::FolderLock second;
        {
            Platform::FolderLock first;
            QVERIFY(first.acquire(folder()));
            QVERIFY(!second.acquire(folder()));
        }
        QVERIFY(second.acquire(folder()));
    }

private:
    fs::path folder(const QString &name = QString("installation")) const
    {
        return m_root->filePath(name).toStdString();
    }
    bool isExecutable(const char *name) const
    {
        return (fs::status(folder() / name).permissions() & fs::perms::owner_exec) != fs::perms::none;
    }
    static void write(const fs::path &path, const QByteArray &content)
    {
        fs::create_directories(path.parent_path());
        QVERIFY(writeFile(QString::fromStdString(path.string()), content));
    }

    // All files below, but not what an update works in.
    static Tree treeAt(const fs::path &folder)
    {
        const QString root = QString::fromStdString(folder.string());
        Tree tree;
        QDirIterator files(root, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QString name = QDir(root).relativeFilePath(files.next());
            if (!name.startsWith(QString("_update/")))
                tree.insert(name, contentOf(files.filePath()));
        }
        return tree;
    }

    void makeOld()
    {
        fs::remove_all(folder());
        for (auto file = m_old.cbegin(); file != m_old.cend(); ++file)
            write(folder() / file.key().toStdString(), file.value());
    }

    bool update(Disk &disk, const QByteArray &archive)
    {
        std::istringstream stream(archive.toStdString());
        ZipReader reader(stream);
        Package package;
        m_problem.clear();
        if (!reader.open(m_problem) || !package.check(reader, "App", m_problem))
            return false;
        return Installation(folder(), "App", disk).update(reader, package, folder("unpacker"), m_problem);
    }

    bool update(Disk &disk)
    {
        return update(disk, makeZip({{"App", "new application", 0100755},
                                     {"lib/a", "new a"},
                                     {"plugins/deep/new.txt", "new file"},
                                     {"unzip.exe", "new unpacker"},
                                     {"conf/config.ini", "not these"},
                                     {"lib/new", "another", 0100755}}));
    }

    // Told by the executable; the rest has to fit.
    QString stateOf(const fs::path &folder) const
    {
        const Tree tree = treeAt(folder);
        if (tree == m_old)
            return QString("old");
        if (tree == m_new)
            return QString("new");
        FaultyDisk disk(FaultyDisk::None, 0);
        return tree.value("App") == "the unpacker" && Installation::pendingFor(folder) == "App" &&
                       Installation(folder, "App", disk).isHalfway()
                   ? QString("halfway")
                   : QString("broken: ") + tree.keys().join(QLatin1Char(' '));
    }

    // What a user finds who starts the program after it was interrupted; `again`:
    // finishing is interrupted as well, at every operation.
    void checkAfterwards(const fs::path &left, FaultyDisk::Fault fault, bool again)
    {
        const QString state = stateOf(left);
        QVERIFY2(!state.startsWith(QString("broken")), qPrintable(state));
        std::string problem;
        if (state == QString("halfway")) {
            bool interrupted = again;
            for (int i = 1; interrupted; ++i) {
                const fs::path copy = folder("copy");
                fs::remove_all(copy);
                fs::copy(left, copy, fs::copy_options::recursive);
                FaultyDisk disk(fault, i);
                Installation(copy, "App", disk).finish(problem);
                disk.cutPower();
                interrupted = disk.hasFailed();
                checkAfterwards(copy, fault, false);
                if (QTest::currentTestFailed())
                    return;
            }
            FaultyDisk disk(FaultyDisk::None, 0);
            const bool isNew = Installation(left, "App", disk).finish(problem);
            QCOMPARE(stateOf(left), isNew ? QString("new") : QString("old"));
        }
        FaultyDisk disk(FaultyDisk::None, 0);
        QVERIFY(Installation(left, "App", disk).clean());
        QVERIFY(!fs::exists(left / "_update"));
    }

    std::unique_ptr<QTemporaryDir> m_root;
    Tree m_old;
    Tree m_new;
    std::string m_problem;
};

QTEST_GUILESS_MAIN(TestInstallation)
#include "test_installation.moc"
