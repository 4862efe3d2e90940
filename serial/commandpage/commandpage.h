#pragma once

// The send box's page of commands: sets of them in a table, sent one by one or as a
// sequence that waits for answers. Knows no device; who owns the box says how bytes
// leave, whether one is open, and what is received.

#include "commandrunner.h"
#include "commandstore.h"
#include "notice.h"
#include "settings.h"

#include <QWidget>

class CommandModel;
class QAction;
class QComboBox;
class QLabel;
class QMenu;
class QPushButton;
class QSpinBox;
class QTableView;

class CommandPage : public QWidget
{
    Q_OBJECT

public:
    explicit CommandPage(QWidget *parent = nullptr);
    ~CommandPage() override;

    void remember(Settings::SendChoices *choices);
    void load(); // the choices are others now

    CommandRunner *runner() { return &m_runner; }
    // Without a device a sequence stops, or waits for it, as the user chose.
    void setDeviceOpen(bool open);

    // With what is being typed. The reason of a failure, which is also posted.
    QString storeAll();

signals:
    // Asks whether bytes can leave now; the owner shows why not.
    void deviceNeeded(bool *isThere);
    void notify(const Notice &notice);

protected:
    void showEvent(QShowEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void buildUi();
    QLayout *buildTop();
    void buildTable();
    void fillMenu(QMenu *menu);
    bool hasDevice();
    QString saveChanges();
    void endEditing();

    void showSets();
    void openSet(const QString &name);
    void newSet();
    void renameSet();
    void removeSet();
    void importSet();
    void exportCsv();
    void exportList();
    void writeFile(const QString &filter, const QByteArray &content);
    void saveReport();

    void addCommand();
    void removeCommands();
    void sendRow(int row);
    void startOrStop();
    void showProgress();
    void handleEnded();

    CommandStore m_store;
    CommandRunner m_runner;
    CommandModel *m_model;
    Settings::SendChoices *m_choices = nullptr;
    QString m_setName;
    bool m_isChanged = false;
    bool m_isOpen = false; // the device
    QTimer m_saveTimer;
    QComboBox *m_sets;
    QPushButton *m_menu;
    QPushButton *m_add;
    QPushButton *m_remove;
    QSpinBox *m_rounds;
    QAction *m_resumes;
    QPushButton *m_run;
    QLabel *m_progress;
    QTableView *m_table;
    QLabel *m_empty;
};
