#include "launchoptions.h"

#include <QTemporaryDir>
#include <QtTest>

class TestLaunch : public QObject
{
    Q_OBJECT

private slots:
    void understandsTheCommandLine_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("expected"); // the fault, or what is asked for
        const auto add = [](const char *arguments, const char *expected) {
            QTest::newRow(arguments) << QString(arguments).split(' ', Qt::SkipEmptyParts)
                                     << QString(expected);
        };
        add("", "-1,,,0,,,");
        add("--tool serial --port COM3 --baud 115200 --open --log FOLDER/a.log",
            "0,,COM3,115200,open,a.log,");
        add("--open", "0,,,0,open,,");
        add("--profile=A=B", "0,A=B,,0,,,");
        add("--tool=network --open --log FOLDER/b", "2,,,0,open,b,");
        add("FOLDER/x.bin", "4,,,0,,,x.bin");
        add("-- --help", "4,,,0,,,--help");
        add("--tool camera --demo", "1,,,0,,,");
        add("--tool radio", "工具无效：radio");
        add("--baud 0", "波特率无效：0");
        add("--baud 50000001", "波特率无效：50000001");
        add("--baud fast", "波特率无效：fast");
        add("--port=", "端口为空");
        add("--profile=", "方案名称为空");
        add("--baud", "选项缺少值：--baud");
        add("--open=1", "未知的选项：--open=1");
        add("-x", "未知的选项：-x");
        add("--log FOLDER/none/a.log", "日志文件夹不存在：FOLDER/none/a.log");
        add("--log FOLDER", "日志文件无效：FOLDER");
        add("a b", "只能打开一个文件：b");
        add("--tool serial a", "文件只能用二进制文件编辑器打开");
        add("--tool pid --port COM3", "--port和--baud只用于串口工具");
        add("--tool camera --open", "--open、--log和--profile只用于串口和网络工具");
    }

    void understandsTheCommandLine()
    {
        QFETCH(QStringList, arguments);
        const QTemporaryDir folder;
        arguments.replaceInStrings("FOLDER", folder.path());
        const LaunchOptions options = LaunchOptions::parse(arguments);
        const auto name = [](const QString &path) { return path.section('/', -1); };
        const QString asked = QStringList({QString::number(options.tool), options.profile, options.port,
                                           QString::number(options.baudRate), options.opens ? "open" : "",
                                           name(options.logFile), name(options.file)})
                                  .join(',');
        QString fault = options.fault;
        QTEST(fault.isEmpty() ? asked : fault.replace(folder.path(), "FOLDER"), "expected");
        QCOMPARE(options.isDemo, arguments.contains("--demo"));
        QVERIFY(options.action == LaunchOptions::Action::Run);
    }

    void answersFirst()
    {
        QVERIFY(LaunchOptions::parse({"--bogus", "-h"}).action == LaunchOptions::Action::Run);
        QVERIFY(LaunchOptions::parse({"--open", "--help", "--bogus"}).action ==
                LaunchOptions::Action::ShowHelp);
        QVERIFY(LaunchOptions::parse({"-v"}).action == LaunchOptions::Action::ShowVersion);
        const auto answer = [](const QStringList &arguments) {
            QProcess program;
            program.start(KORVEX_PATH, arguments);
            program.waitForFinished(60000);
            const QString errors = QString::fromUtf8(program.readAllStandardError());
            return QString("%1|%2|").arg(program.exitCode()).arg(QString::fromUtf8(program.readAll())) +
                   errors.mid(errors.indexOf("选项缺少值：")).mid(qMax(0, errors.indexOf("没有这个方案")));
        };
        QVERIFY(QRegularExpression("^0\\|Korvex [\\d.]+\n\\|$").match(answer({"-v"})).hasMatch());
        QCOMPARE(answer({"--open", "--help"}),
                 QString("0|用法：Korvex [选项] [文件]\n\n文件用二进制文件编辑器打开。\n\n选项：\n"
                         "  -h, --help        显示帮助\n"
                         "  -v, --version     显示版本\n"
                         "  --tool TOOL       启动后显示的工具：serial、camera、network、pid或hex\n"
                         "  --profile NAME    选用该工具的方案\n"
                         "  --port PORT       串口，例如COM3\n"
                         "  --baud N          波特率\n"
                         "  --open            启动后打开串口或网络连接\n"
                         "  --log FILE        会话日志写入该文件，已有内容保留\n"
                         "  --demo            使用模拟开发板（COM3至COM8和网络）\n"
                         "  --notice TEXT     启动后显示的错误提示\n|"));
        QCOMPARE(answer({"--baud"}), QString("2||选项缺少值：--baud\n用 --help 查看帮助\n"));
        QCOMPARE(answer({"--open", "--profile=?"}), QString("2||没有这个方案：?\n用 --help 查看帮助\n"));
    }
};

QTEST_GUILESS_MAIN(TestLaunch)
#include "test_launch.moc"
