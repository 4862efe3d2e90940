#pragma once

// The tours through the program. Each test function has a fresh stage.

#include <QObject>
#include <memory>

class QPixmap;
class Stage;

class Tour : public QObject
{
    Q_OBJECT

public:
    Tour();
    ~Tour() override;

private slots:
    void init();
    void cleanup();

protected:
    Stage &stage() { return *m_stage; }

private:
    std::unique_ptr<Stage> m_stage;
};

// Opening, closing, plugging and unplugging.
class PortTour : public Tour
{
    Q_OBJECT

private slots:
    void opensAndCloses();
    void remembersTheParameters();
    void staysOpenWithRefusedParameters();
    void saysWhatCannotBeOpened();
    void opensATypedDevice();
    void leavesAPortThatIsHeld();
    void noticesUnplugging();
    void closesWhenAnotherPortComes();
};

// What a board sends is shown, counted and saved.
class ReceiveTour : public Tour
{
    Q_OBJECT

private slots:
    void showsTheLog();
    void showsChinese_data();
    void showsChinese();
    void showsHexadecimal();
    void showsTimeStamps();
    void showsTheLatestInLogMode();
    void countsWhileNotShowing();
    void savesText();
    void savesBytes();
    void clears();
};

// What a user types and stores goes out over the wire.
class SendTour : public Tour
{
    Q_OBJECT

private slots:
    void refusesWithoutAPort();
    void sendsTypedText();
    void sendsNewLines();
    void sendsHexadecimal();
    void sendsStoredRows();
    void turnsAndKeepsRows();
    void sendsByItself();
    void talksToAShell();
};

// A control loop is tuned against a board that has five.
class PidTour : public Tour
{
    Q_OBJECT

private slots:
    void tunesALoop();
    void holdsTheViewAndReturns();
    void choosesCurves();
    void livesWithBadBoards_data();
    void livesWithBadBoards();
    void noticesAResetBoard();
    void noticesAPulledBoard();
    void leavesAPortThatTheSerialPageHolds();
    void stopsTheMotorWhenQuitting();
};

// Server, client and UDP with boards on the network.
class NetworkTour : public Tour
{
    Q_OBJECT

private slots:
    void servesBoards();
    void connectsToABoard();
    void exchangesDatagrams();
    void saysWhatIsWrong();
};

// Binary files are opened, searched, changed and saved.
class HexTour : public Tour
{
    Q_OBJECT

private slots:
    void editsAndSaves();
    void findsAndReplaces();
    void warnsBeforeEditsAreLost();
    void saysWhatCannotBeOpened();
};

// Pictures and registers of camera boards.
class CameraTour : public Tour
{
    Q_OBJECT

private slots:
    void showsTwoCameras();
    void setsRegisters();
};

// Files go to a board by YModem.
class TransferTour : public Tour
{
    Q_OBJECT

private slots:
    void sendsFiles();
    void stops();
    void explainsAFailure();
};

// A newer version is found and fetched.
class UpdateTour : public Tour
{
    Q_OBJECT

private slots:
    void downloadsAPackage();
};

// The window around the tools, and its end.
class WindowTour : public Tour
{
    Q_OBJECT

private slots:
    void turnsToTools();
    void foldsThePanel();
    void restoresTheSettings();
    void closesWithoutAsking();
    void asksBeforeClosing();
    void savesWhenClosing();
};

// Pictures of every tool in all skins, of menus and of dialogs.
class PictureTour : public Tour
{
    Q_OBJECT

public:
    explicit PictureTour(const QString &folder);

private slots:
    void tools_data();
    void tools();
    void sendPages();
    void network();
    void camera_data();
    void camera();
    void binaryFile_data();
    void binaryFile();
    void fileSending_data();
    void fileSending();
    void menus_data();
    void menus();
    void dialogs_data();
    void dialogs();
    void tips();

private:
    bool chooseSkin(const QString &skin);
    void save(const QString &name, const QPixmap &picture) const;

    QString m_folder;
};
