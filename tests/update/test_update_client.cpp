// Checking and downloading against a server that behaves well or badly.

#include "testfiles.h"
#include "updateclient.h"
#include "updateserver.h"

#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <memory>
#include <sys/resource.h>

class TestUpdateClient : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        QCoreApplication::setApplicationName(QString("Korvex"));
        m_root = std::make_unique<QTemporaryDir>();
        m_server = std::make_unique<UpdateServer>();
        m_client = std::make_unique<UpdateClient>(QUrl("http://" + m_server->address()), m_root->path());
    }

    void asksTheServer()
    {
        QSignalSpy contacting(m_client.get(), &UpdateClient::contacting);
        QCOMPARE(check(UpdateServer::version("1.0.2.7", "修复")), "Newer ");
        QCOMPARE(m_client->version().number, "1.0.2.7");
        QCOMPARE(m_client->version().notes, QString("修复"));
        QCOMPARE(contacting.first().at(0).toUrl().authority(), QString(m_server->address()));
        QCOMPARE(check(UpdateServer::version("1.0.2.7", QByteArray(200000, 'n'))), "Newer ");
        QCOMPARE(m_client->version().notes.size(), 64 * 1024 + 1); // "…"
        QCOMPARE(download(UpdateServer::package("a.zip", "PK")), "Complete ");
        QCOMPARE(m_server->requests().size(), 3);
        for (const QByteArray &request : m_server->requests())
            QVERIFY(request.contains("Content-Type: application/x-www-form-urlencoded") &&
                    request.contains("Accept-Encoding: identity"));
        QVERIFY(m_server->requests().first().startsWith("GET /cv/Korvex HTTP/1.1\r\n"));
        QVERIFY(m_server->requests().last().startsWith("GET /up/Korvex HTTP/1.1\r\n"));
        m_server.reset();
        QCOMPARE(wait(&UpdateClient::checked, [this] { m_client->check(); }),
                 QString("NoReply 服务器拒绝连接"));
    }

    void judgesReplies()
    {
        const auto row = [this](const char *name, const QByteArray &body, const QString &outcome) {
            UpdateServer::Reply reply;
            reply.body = body;
            QVERIFY2(check(reply) == outcome, name);
        };
        const auto noVersion = QString(" 服务器的回复不是版本信息");
        row("same", UpdateServer::version("1.0.2.6", "n").body, "Latest ");
        row("three parts", UpdateServer::version("1.0.3", "n").body, "Latest ");
        row("far newer", UpdateServer::version("128.0.0.0", "n").body, "Newer ");
        row("wrong types", "{\"verNum\": 16777735, \"verInfo\": []}", "Latest ");
        row("no body", "", QString("NoReply 服务器的回复是空的"));
        row("no object", "[1, 2]", "NoReply" + noVersion);
        row("no JSON", "<html>proxy</html>", "BadReply" + noVersion);
        row("cut JSON", UpdateServer::version("1.0.2.7", "n").body.left(20), "BadReply" + noVersion);
        row("1 MB", QByteArray((1 << 20) - 2, ' ') + "{}", "Latest ");
        row("above 1 MB", QByteArray(8 << 20, ' '), QString("BadReply 服务器的回复过长"));
    }

    void storesPackages()
    {
        const QByteArray body(3000000, 'x');
        QSignalSpy progress(m_client.get(), &UpdateClient::progress);
        QCOMPARE(download(UpdateServer::package("../korvex.tar", body)), "Complete ");
        QCOMPARE(m_client->packagePath(), m_root->filePath("korvex.tar"));
        QVERIFY(content("korvex.tar") == body);
        QCOMPARE(progress.last(), (QVariantList{3000000, 3000000}));
        UpdateServer::Reply unknownLength = UpdateServer::package("/x/korvex.tar", "second");
        unknownLength.announced = -2;
        QCOMPARE(download(unknownLength), "Complete ");
        QCOMPARE(content("korvex.tar"), QByteArray("second")); // nothing of the first
        QCOMPARE(files(), QStringList("korvex.tar"));
    }

    void refusesPackages()
    {
        const auto row = [this](const char *name, const QString &outcome, const QByteArray &status,
                                qint64 announced, qint64 cutAfter, int size = 100000) {
            UpdateServer::Reply reply = UpdateServer::package("korvex.zip", QByteArray(size, 'x'));
            reply.status = status;
            reply.announced = announced;
            reply.cutAfter = cutAfter;
            QVERIFY2(download(reply) == outcome && files().isEmpty(), name);
        };
        row("not found", QString("Failed 服务器返回错误 404"), "404 Not Found", -1, -1);
        row("error", QString("Failed 服务器返回错误 500"), "500 Oops", -1, -1);
        row("cut off", QString("Failed 服务器断开了连接"), "200 OK", -1, 70000);
        row("announced too long", QString("Failed 服务器断开了连接"), "200 OK", 100001, -1);
        row("empty", QString("Failed 收到的数据不完整"), "200 OK", -1, -1, 0);
        row("endless", QString("TooLarge 1073741825 字节"), "200 OK", (1 << 30) + 1, -1);
        QVERIFY(writeFile(m_root->filePath("korvex.zip"), "another's"));
        m_client.reset();
        QCOMPARE(files(), QStringList("korvex.zip"));
    }

    void reportsADiskThatRefuses()
    {
        QVERIFY(QDir(m_root->path()).mkdir("korvex.zip"));
        QVERIFY(download(UpdateServer::package("korvex.zip", "PK")).startsWith("NotCreated "));

        ::signal(SIGXFSZ, SIG_IGN); // as on a full disk: files may grow no further
        rlimit before{};
        QCOMPARE(getrlimit(RLIMIT_FSIZE, &before), 0);
        const rlimit tight{100000, before.rlim_max};
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &tight), 0);
        const QString outcome = download(UpdateServer::package("other.zip", QByteArray(500000, 'x')));
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &before), 0);
        QVERIFY(outcome.startsWith("NotWritten "));
        QCOMPARE(files(), QStringList());
    }

    void followsRedirects()
    {
        const QByteArray there = "localhost:" + QByteArray::number(m_server->serverPort());
        UpdateServer::Reply elsewhere;
        elsewhere.status = "302 Found";
        elsewhere.headers = "Location: http://" + there + "/there/\r\n";
        elsewhere.body = "moved";
        m_server->setReply("there", UpdateServer::package("korvex.tar", "moved here"));
        QSignalSpy contacting(m_client.get(), &UpdateClient::contacting);
        QCOMPARE(download(elsewhere), "Complete ");
        QCOMPARE(contacting.last().at(0).toUrl().authority(), QString(there));
        QCOMPARE(content("korvex.tar"), QByteArray("moved here"));
    }

    void leavesNothingWhenCanceled()
    {
        QSignalSpy downloaded(m_client.get(), &UpdateClient::downloaded);
        UpdateServer::Reply reply = UpdateServer::package("korvex.zip", QByteArray(500000, 'x'));
        reply.announced = 1000000; // the rest does not come
        reply.stuck = true;
        m_server->setReply("up", reply);
        for (const bool destroy : {false, true}) {
            m_client->download();
            QTRY_COMPARE(files(), QStringList("korvex.zip"));
            if (destroy)
                m_client.reset();
            else
                m_client->cancel();
            QCOMPARE(files(), QStringList());
        }
        QCOMPARE(downloaded.count(), 0);
    }

    // As a dialog that closes on the answer.
    void mayBeDestroyedByItsAnswer()
    {
        m_server->setReply("cv", UpdateServer::version("1.0.2.7", "n"));
        connect(m_client.get(), &UpdateClient::checked, this, [this] { m_client.reset(); });
        m_client->check();
        QTRY_VERIFY(!m_client);
    }

private:
    QStringList files() const { return QDir(m_root->path()).entryList(QDir::Files | QDir::Hidden); }
    QByteArray content(const QString &name) const { return contentOf(m_root->filePath(name)); }

    // Outcome and reason.
    QString download(const UpdateServer::Reply &package)
    {
        m_server->setReply("up", package);
        return wait(&UpdateClient::downloaded, [this] { m_client->download(); });
    }

    QString check(const UpdateServer::Reply &reply)
    {
        m_server->setReply("cv", reply);
        return wait(&UpdateClient::checked, [this] { m_client->check(); });
    }

    template <typename Signal> QString wait(Signal signal, const std::function<void()> &start)
    {
        QString result;
        const auto connection =
            connect(m_client.get(), signal, [&result](auto outcome, const QString &reason) {
                result += QVariant::fromValue(outcome).toString() + ' ' + reason; // once
            });
        start();
        (void)QTest::qWaitFor([&result] { return !result.isEmpty(); }, 20000);
        disconnect(connection);
        return result;
    }

    std::unique_ptr<QTemporaryDir> m_root;
    std::unique_ptr<UpdateServer> m_server;
    std::unique_ptr<UpdateClient> m_client;
};

QTEST_GUILESS_MAIN(TestUpdateClient)
#include "test_update_client.moc"
