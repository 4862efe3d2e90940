// Recording and playing on the camera page, with boards in processes of their own.

#include "answers.h"
#include "camerapagetest.h"
#include "freshfolder.h"
#include "recordingbar.h"
#include "settings.h"

#include <QAction>
#include <QCheckBox>
#include <QDir>
#include <QLabel>

class TestCameraRecordingPage : public CameraPageTest
{
    Q_OBJECT

private slots:
    // Bytes of which the page's own choices made a picture make the same one again.
    void playsAStream()
    {
        const FreshFolder folder;
        child<QLineEdit>("editRecordFolder")->setText(QStringLiteral("out")); // in the program's folder
        click("btnRecord");
        BoardProcess board;
        QVERIFY(connectBoard(board, {"--fps", "20"}));
        const QImage before = child<ImageViewer>("imageViewer")->image(0).toImage();
        QVERIFY(before.width() == 16);
        click("btnPlay"); // asks how
        child<QAction>("actionPlayFast")->trigger();
        QVERIFY(!child<RecordingBar>("recordingBar")->player()->isPlaying()); // the link is open
        click("btnCameraOpen");
        QTRY_VERIFY(m_page->isClosed() || child<RecordingBar>("recordingBar")->recorder()->isOn());
        click("btnRecord");
        QTRY_VERIFY_WITH_TIMEOUT(m_page->isClosed(), 30000);

        const QStringList files = QDir(folder.filePath("out")).entryList({"*.kvcam"}, QDir::Files);
        QCOMPARE(files.size(), 1);
        m_page->clearCounts();
        child<QCheckBox>("checkBigEndian")->setChecked(true);
        const qint64 frames = m_page->frames();
        chooseFile(folder.filePath("out/" + files.first()));
        child<QAction>("actionPlayFast")->trigger();
        QVERIFY(child<RecordingBar>("recordingBar")->player()->isPlaying());
        QVERIFY(!child<QCheckBox>("checkBigEndian")->isChecked());
        QTRY_VERIFY_WITH_TIMEOUT(!child<RecordingBar>("recordingBar")->player()->isPlaying(), 30000);
        QVERIFY(child<QCheckBox>("checkBigEndian")->isChecked()); // for the next board
        QVERIFY(m_page->frames() > frames);
        QTRY_COMPARE_WITH_TIMEOUT(child<ImageViewer>("imageViewer")->image(0).size(), QSize(16, 16), 30000);
    }

    // A recording that is waiting for a board does not keep the old address.
    void takesAProfileWhileItRecords()
    {
        const FreshFolder folder;
        child<QLineEdit>("editRecordFolder")->setText(folder.path());
        click("btnRecord");
        Settings::instance().camera.port.set(4711);
        m_page->reloadSettings();
        QCOMPARE(child<QLineEdit>("editCameraPort")->text(), QStringLiteral("4711"));
    }

    // Files are complete before the program ends, or the session does.
    void endsWithTheProgram()
    {
        const FreshFolder folder;
        child<QLineEdit>("editRecordFolder")->setText(folder.path());
        child<QComboBox>("comboRecordKind")->setCurrentIndex(1);
        click("btnRecord");
        BoardProcess board;
        QVERIFY(connectBoard(board, {"--fps", "20"}));
        QVERIFY(m_page->saveBeforeExit());
        QVERIFY(!m_page->isClosed());
        m_page->closeLinks();
        QTRY_VERIFY_WITH_TIMEOUT(m_page->isClosed(), 30000);
        const QStringList files = QDir(folder.path()).entryList({"*.avi"}, QDir::Files);
        QCOMPARE(files.size(), 1);
        QFile file(folder.filePath(files.first()));
        QVERIFY(file.open(QIODevice::ReadOnly) && file.readAll().contains("idx1"));
    }
};

QTEST_MAIN(TestCameraRecordingPage)
#include "test_camera_recording_page.moc"
