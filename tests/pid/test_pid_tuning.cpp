// What the PID page makes of its record: the list of runs, references over the
// current one, the suggestion of gains, sessions in files. A pseudo-terminal is the
// board where something is sent.

#include "answers.h"
#include "korvexresources.h"
#include "pageparts.h"
#include "piddebugwidget.h"
#include "pidplot.h"
#include "pidrecorder.h"
#include "pidviewmenu.h"
#include "ptypeer.h"
#include "qtmessagebox.h"
#include "runmodel.h"
#include "settings.h"
#include "testfiles.h"

#include <QtTest>
#include <QtWidgets>

#include <cmath>

class TestPidTuning : public QObject, PageParts<PidDebugWidget>
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        initKorvexResources();
        QLoggingCategory::setFilterRules(QString("default.debug=false"));
    }

    void init()
    {
        makePage(1200, 700);
        QVERIFY(QTest::qWaitForWindowActive(m_page.get()));
        m_questions = std::make_unique<Questions>(QtMessageBox::Discard);
        Settings::instance().pid.analysis.set(true);
        m_page->reloadSettings();
    }

    void cleanup()
    {
        m_page.reset();
        m_questions.reset();
    }

    void stopsWhatRuns()
    {
        PtyPeer board;
        child<QComboBox>("comboPidPort")->setEditText(board.device());
        click("btnPidOpen");
        QWidget *bar = child<QWidget>("pidRunningBar");
        QVERIFY(!bar->isVisible());
        m_page->SltRecvFromSerialport(PidFrame::build(PidFrame::Started, 2, {}) +
                                      PidFrame::build(PidFrame::Started, 4, {}));
        QVERIFY(bar->isVisible() && child<QWidget>("btnStopChannel2")->isVisible());
        QVERIFY(!child<QWidget>("btnStopChannel1")->isVisible());
        auto *target = child<QLineEdit>("editTarget");
        target->setFocus();
        QTest::keyClicks(target, "77");
        QTest::keyClick(target, Qt::Key_Escape); // the typed text only
        QCOMPARE(target->text(), QString());
        QVERIFY(bar->isVisible());
        QTest::keyClick(target, Qt::Key_Escape);
        QTRY_VERIFY(!bar->isVisible());
        QCOMPARE(board.read(22),
                 PidFrame::build(PidFrame::Stop, 2, {}) + PidFrame::build(PidFrame::Stop, 4, {}));
        QCOMPARE(child<QPushButton>("btnPidStart")->text(), QString("启动"));
        m_page->SltRecvFromSerialport(PidFrame::build(PidFrame::Started, 4, {}));
        click("btnPidOpen"); // the channel of another than the selected one keeps running there
        QVERIFY(!bar->isVisible());
    }

    void listsRuns()
    {
        recordSteps();
        refresh();
        auto *table = child<QTableView>("tablePidRuns");
        const QAbstractItemModel *model = table->model();
        QCOMPARE(model->rowCount(), 2); // the newest first
        const auto text = [&](int row, const char *caption) {
            for (int column = 0; column < model->columnCount(); ++column)
                if (model->headerData(column, Qt::Horizontal).toString() == QString(caption))
                    return model->index(row, column).data().toString();
            return QString("no such column");
        };
        QCOMPARE(text(1, "目标值"), QString("0 → 100"));
        QCOMPARE(text(0, "目标值"), QString("100 → 300"));
        // Of a lag of 0.5 s: 2.197 times it.
        QVERIFY(qAbs(text(0, "上升(s)").section(' ', 0, 0).toDouble() - 1.0986) < 0.01);
        QVERIFY(text(0, "振荡(s)") == QString("—") && text(0, "P") == QString("2"));
        QVERIFY(text(1, "IAE").endsWith("★") && text(0, "IAE").endsWith("▽"));
        chooseFile(m_root->filePath("runs.csv"));
        click("btnExportRuns");
        const QStringList lines = QString::fromUtf8(contentOf(m_root->filePath("runs.csv"))).split("\r\n");
        QCOMPARE(lines.size(), 4);
        QVERIFY(lines.at(0).contains("上升(s)") && lines.at(2).contains(",0 → 100,"));
        QCOMPARE(lines.at(1).count(','), lines.at(0).count(','));

        // A name that is being typed survives what arrives meanwhile.
        const int nameColumn = 3;
        table->setCurrentIndex(model->index(0, nameColumn));
        table->edit(model->index(0, nameColumn));
        auto *editor = table->viewport()->findChild<QLineEdit *>();
        QVERIFY(editor);
        editor->setText("abc");
        refresh();
        QCOMPARE(editor->text(), QString("abc"));
        QTest::keyClick(editor, Qt::Key_Return);
        QTRY_COMPARE(recorder()->runs()->newest(1)->name, QString("abc"));
        recorder()->runs()->rename(recorder()->runs()->newest(1)->id, {});

        // The first run as a pale curve, aligned at the step of the second one.
        QVERIFY(table->model()->setData(model->index(1, 0), Qt::Checked, Qt::CheckStateRole));
        plot()->showRange(second(20), second(25));
        QTRY_COMPARE(plot()->graphCount(), 11);
        const auto overlay = plot()->graph(10)->data();
        QVERIFY(!overlay->isEmpty());
        const auto half = overlay->findBegin(0.5 + 20.0); // one lag behind the step
        QVERIFY(qAbs(half->value - 63.2) < 3);
        // Opened at a double click, hidden and deleted; the selection stays its own.
        table->selectRow(1);
        click("btnReferRun"); // is one already
        QTRY_COMPARE(plot()->graphCount(), 10);
        click("btnHideRun");
        QCOMPARE(model->rowCount(), 1);
        child<QCheckBox>("checkHiddenRuns")->click();
        QCOMPARE(model->rowCount(), 2);
        plot()->returnToLive();
        table->selectRow(0);
        click("btnShowRun");
        QCOMPARE(plot()->follow(), PidPlot::Held);
        QVERIFY(plot()->xAxis->range().contains(21.0));
        click("btnRemoveRun");
        QCOMPARE(model->rowCount(), 1);
    }

    void suggestsGains()
    {
        recordSteps();
        refresh();
        auto *table = child<QTableView>("tablePidRuns");
        table->selectRow(0);
        QVERIFY(!child<QPushButton>("btnApplyTuning")->isEnabled());
        click("btnAnalyze");
        const auto *result = child<QLabel>("labelTuningResult");
        QTRY_VERIFY_WITH_TIMEOUT(result->text().startsWith(QString("建议：")), 60000);
        QVERIFY2(child<QLabel>("labelTuningModel")->text().contains("K="),
                 qPrintable(child<QLabel>("labelTuningModel")->text()));
        QCOMPARE(plot()->graphCount(), 11);
        click("btnApplyTuning");
        QCOMPARE(child<QComboBox>("comboPidChannel")->currentIndex(), 1);
        for (const char *field : {"editP", "editI"}) {
            QVERIFY(child<QLineEdit>(field)->hasAcceptableInput());
            QVERIFY(child<QLineEdit>(field)->text().toDouble() > 0.1);
            QVERIFY(child<QLineEdit>(field)->isModified()); // no report overwrites it
        }
        const QString gentle = result->text();
        child<QSlider>("sliderTuningSpeed")->setValue(100);
        QVERIFY(result->text() != gentle);
        child<QComboBox>("comboTuningRule")->setCurrentIndex(2);
        emit child<QComboBox>("comboTuningRule")->activated(2);
        QVERIFY(!child<QPushButton>("btnApplyTuning")->isEnabled()); // nothing swings
        child<QComboBox>("comboTuningRule")->setCurrentIndex(0);
        emit child<QComboBox>("comboTuningRule")->activated(0);
        QVERIFY(child<QPushButton>("btnApplyTuning")->isEnabled());
        Settings::instance().pid.gainForm.set(2); // as a profile does
        m_page->reloadSettings();
        QVERIFY(!child<QPushButton>("btnApplyTuning")->isEnabled());
        recorder()->runs()->remove(recorder()->runs()->newest(1)->id);
        table->clearSelection();
        QCOMPARE(plot()->graphCount(), 10);
    }

    void keepsSessions()
    {
        recordSteps();
        recorder()->runs()->rename(recorder()->runs()->newest(1)->id, "最好");
        Settings::instance().pid.channelNames.set({"电机", "", "", "", ""});
        const QString name = m_root->filePath("a.kvpid");
        chooseFile(name);
        trigger("保存会话…");
        QTRY_VERIFY_WITH_TIMEOUT(lastNotice().startsWith(QString("会话已保存：")), 60000);
        QVERIFY(m_page->mayClose() && m_questions->asked.isEmpty());
        const qint64 samples = recorder()->held();
        trigger("清空记录…");
        QVERIFY(m_questions->asked.size() == 1 && recorder()->held() == 0);
        Settings::instance().pid.channelNames.set({});
        trigger("打开会话…");
        QTRY_VERIFY_WITH_TIMEOUT(lastNotice().startsWith(QString("会话已打开：")), 60000);
        QCOMPARE(recorder()->held(), samples);
        QCOMPARE(recorder()->runs()->newest(1)->name, QString("最好"));
        QCOMPARE(child<QCheckBox>("checkCurve0")->text(), QString("电机"));
        QCOMPARE(plot()->follow(), PidPlot::Held);
        QVERIFY(plot()->graph(6)->dataCount() > 100);

        // Opening over a record asks; a broken file changes nothing.
        m_questions->answer = QtMessageBox::Cancel;
        trigger("打开会话…");
        QCOMPARE(m_questions->asked.size(), 2);
        m_questions->answer = QtMessageBox::Discard;
        QVERIFY(writeFile(name, "not a session"));
        trigger("打开会话…");
        QTRY_VERIFY_WITH_TIMEOUT(m_questions->asked.contains("会话打开失败!"), 60000);
        QCOMPARE(recorder()->held(), samples);
    }

    // An hour of one run is not read again twice a second, but is right in the end.
    void measuresLongRuns()
    {
        PidRecorder record;
        record.addEvent({PidEvent::Started, 0, 0, false});
        const auto add = [&record](int count, qint32 value) {
            for (int k = 0; k < count; ++k)
                record.addActual(0, value, record.record(0).end() * 1000);
        };
        RunFigures figures(&record);
        const auto error = [&] { return figures.of(*record.runs()->newest(0)).iae; };
        add(20000, 1);
        const auto first = error();
        QVERIFY(first);
        add(500, 100);
        QVERIFY(error() == first);
        add(5000, 100);
        const auto longer = error();
        QVERIFY(longer > first);
        add(10, 100);
        record.addEvent({PidEvent::Stopped, 0, second(30), false});
        QVERIFY(error() > longer);

        // A long list is measured in parts.
        RunModel model(&record);
        record.addEvent({PidEvent::Started, 0, second(40), false});
        add(10, 1);
        model.refresh(1);
        QVERIFY(!model.isComplete() && model.rowCount() == 2);
        model.refresh(1);
        QVERIFY(model.isComplete());
    }

    // What the user wrote about runs is saved at quitting, or the quitting is off.
    void asksAboutNamedRuns()
    {
        recordSteps();
        QVERIFY(m_page->mayClose() && m_questions->asked.isEmpty());
        recorder()->runs()->rename(recorder()->runs()->newest(1)->id, "a");
        m_questions->answer = QtMessageBox::Cancel;
        QVERIFY(!m_page->mayClose());
        m_questions->answer = QtMessageBox::Save;
        chooseFile(QString());
        QVERIFY(!m_page->mayClose()); // no name was chosen
        chooseFile(m_root->filePath("b.kvpid"));
        QVERIFY(m_page->mayClose());
        m_page->closeLinks();
        QVERIFY(m_page->saveBeforeExit());
        QVERIFY(QFile::exists(m_root->filePath("b.kvpid")));
    }

    // A save that fails deletes nothing, neither now nor after a later one, and stops quitting.
    void keepsWhatWasNotSaved()
    {
        recordSteps();
        const qint64 samples = recorder()->held();
        m_questions->answer = QtMessageBox::Save;
        chooseFile(m_root->filePath("none/a.kvpid"));
        trigger("清空记录…");
        chooseFile(m_root->filePath("a.csv"));
        trigger("导出带时间的数据…");
        QTRY_VERIFY_WITH_TIMEOUT(lastNotice().startsWith(QString("文件已导出：")), 60000);
        QCOMPARE(recorder()->held(), samples);
        recorder()->runs()->rename(recorder()->runs()->newest(1)->id, "a");
        chooseFile(m_root->filePath("none/a.kvpid"));
        QVERIFY(!m_page->mayClose() && recorder()->runs()->isEdited());

        // A name that was given while saving is not in the file.
        for (int k = 0; k < 600000; ++k)
            recorder()->addActual(1, k, second(30) + k);
        chooseFile(m_root->filePath("a.kvpid"));
        trigger("保存会话…");
        recorder()->runs()->rename(recorder()->runs()->newest(1)->id, "b");
        QTRY_VERIFY_WITH_TIMEOUT(lastNotice().startsWith(QString("会话已保存：")), 60000);
        QVERIFY(recorder()->runs()->isEdited());

        // What a connection records is not replaced by a file.
        m_questions->answer = QtMessageBox::Discard;
        trigger("打开会话…");
        PtyPeer board;
        child<QComboBox>("comboPidPort")->setEditText(board.device());
        click("btnPidOpen");
        m_page->SltRecvFromSerialport(PidFrame::build(PidFrame::Actual, 3, PidFrame::int32ToBytes(5)));
        QTRY_COMPARE_WITH_TIMEOUT(child<QPushButton>("btnPidView")->text(), QString("视图"), 60000);
        QCOMPARE(recorder()->record(2).end(), qint64(1));

        m_questions->answer = QtMessageBox::Save;
        trigger("清空记录…");
        QTRY_COMPARE_WITH_TIMEOUT(recorder()->held(), qint64(0), 60000);
    }

    void showsOtherSpans()
    {
        recordSteps();
        Settings::instance().pid.windowSeconds.set(0);
        m_page->reloadSettings();
        plot()->drawNew();
        QVERIFY(plot()->graph(6)->data()->at(0)->key < 11.0); // everything
        Settings::instance().pid.windowSeconds.set(2);
        m_page->reloadSettings();
        plot()->drawNew();
        QVERIFY(plot()->graph(6)->data()->at(0)->key > 26.0);
        // Units of their own have axes of their own, each fitted to its curves.
        Settings::instance().pid.windowSeconds.set(10);
        Settings::instance().pid.channelUnits.set({"℃", "rpm", "℃", "", ""});
        Settings::instance().pid.axesByUnit.set(true);
        m_page->reloadSettings();
        plot()->drawNew();
        QCOMPARE(plot()->graph(6)->valueAxis(), plot()->yAxis2);
        QCOMPARE(plot()->graph(7)->valueAxis(), plot()->yAxis);
        QVERIFY(plot()->yAxis2->label() == QString("rpm") && plot()->yAxis2->range().contains(299));
        Settings::instance().pid.axesByUnit.set(false);
        m_page->reloadSettings();
        QCOMPARE(plot()->graph(6)->valueAxis(), plot()->yAxis);
        // Stopped display: recorded, but not shown live.
        click("checkPidStopShow");
        const qint64 before = recorder()->record(1).end();
        m_page->SltRecvFromSerialport(PidFrame::build(PidFrame::Actual, 2, PidFrame::int32ToBytes(5)));
        QCOMPARE(recorder()->record(1).end(), before + 1);
    }

private:
    PidRecorder *recorder() const { return m_page->findChild<PidRecorder *>(); }
    PidPlot *plot() const { return child<PidPlot>("pidPlot"); }
    static qint64 second(int number) { return number * 1000000LL; }
    void refresh() const
    {
        QVERIFY(QMetaObject::invokeMethod(child<QWidget>("tablePidRuns")->parentWidget(), "refresh"));
    }
    void trigger(const char *text)
    {
        QMenu *menu = m_page->findChild<PidViewMenu *>()->recordMenu();
        emit menu->aboutToShow();
        for (QAction *action : menu->actions())
            if (action->text() == QString(text))
                return action->trigger();
        QFAIL("no such command");
    }

    // Channel 2 under P = 2 and I = 2 of a lag of 1 s and a gain of 1, which makes a
    // closed loop of two poles, one of which the zero of the controller cancels: a lag
    // of 0.5 s. A step to 100 at 10 s and to 300 at 20 s, ten seconds each, 100
    // reports a second.
    void recordSteps()
    {
        PidRecorder &record = *recorder();
        record.setOrigin(0);
        record.params(1).gains = {2, 2, 0};
        record.params(1).period = 10;
        record.addEvent({PidEvent::Target, 1, second(9), false, {}, 0});
        qint32 from = 0;
        for (int k = 0; k < 2000; ++k) {
            const qint64 us = second(10) + k * 10000;
            if (k % 1000 == 0) {
                from = record.params(1).target;
                record.params(1).target = k == 0 ? 100 : 300;
                record.addEvent({PidEvent::Target, 1, us, false, {}, record.params(1).target});
            }
            const double t = (k % 1000) * 0.01;
            const double value = from + (record.params(1).target - from) * (1 - std::exp(-t / 0.5));
            record.addActual(1, qRound(value), us);
        }
    }

    std::unique_ptr<Questions> m_questions;
};

QTEST_MAIN(TestPidTuning)
#include "test_pid_tuning.moc"
