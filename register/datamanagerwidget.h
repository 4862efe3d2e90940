#pragma once

// The dialog of a register table: shows its rows page by page, edits, imports
// and exports them, and asks its owner to read them from a board or to write them
// to it. Search, order, comparison and options stand in a menu. The rows are the
// model's, the page is the page bar's; sends nothing.

#include "qtframelessdialog.h"
#include "registerfile.h"

#include <QVector>

class QButtonGroup;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QtPageBar;
class RegisterBatchBar;
class RegisterMenu;
class RegisterTableModel;
class RegisterTableView;

class DataManagerWidget : public QtFramelessDialog
{
    Q_OBJECT

public:
    enum Mode { Read, Write };

    // The table outlives the dialog.
    DataManagerWidget(Mode mode, RegisterTableModel *table, QWidget *parent = nullptr);

    // While the owner reads or writes the registers, the rows can't be changed here,
    // and it can be asked to stop.
    void setBusy(bool busy);
    void showProgress(const QString &text);
    // Bytes of an address and of a value on the board, for exported C source.
    void setLengths(int address, int value);
    // Shown in the menu beside the options of a batch.
    void addOption(QAction *option);

    // Offers to save rows that no file has. False: the user wants to stay.
    bool mayClose();
    // Instead of all others; asks where some would be lost.
    void copyRows(const QVector<RegisterRow> &rows);

public slots:
    void SltButtonClicked(int index); // in the order of the buttons
    void SltChangePage(int index);    // counted from 1

signals:
    void signalRefreshData(int pageIndex); // that page is shown
    void signalChangePage(int index);
    void signalCloseWindow();
    void confirmed(); // the rows are to be read or written
    void rowsConfirmed(const QVector<int> &rows);
    void compareRequested();
    void readTableRequested(); // its rows, for copyRows()
    void reportRequested();    // of the last requests, as a file
    void stopRequested();

protected:
    void hideEvent(QHideEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void buildUi();
    void addMoreButton(QHBoxLayout *row);
    QWidget *buildSearch();
    void connectParts();
    void connectMenu();
    void addPage();
    bool askToDeletePage(int page);
    void confirmSelected();
    bool mayWriteHidden();
    void showSearch(bool isOn);
    void showRows();                          // the view has other rows now
    void showPages();                         // instead of rows that were searched or sorted
    bool exportTable(const QString &filters); // false when the user cancelled it, or it failed
    void importTable();
    void importSlice();
    void endImport();
    void clearTable();
    void showFileError(const QString &what, const QString &reason);

    Mode m_mode;
    RegisterTableModel *m_table;
    RegisterFile m_file;
    int m_addressLength = 2;
    int m_valueLength = 1;
    int m_pageToDelete = 0; // counted from 1; the bar has turned when it reports the deletion
    QWidget *m_searchBar = nullptr;
    QLineEdit *m_search; // made in the order of Tab
    QLabel *m_found;
    RegisterTableView *m_view;
    QtPageBar *m_pageBar;
    RegisterMenu *m_menu;
    RegisterBatchBar *m_batchBar;
    QButtonGroup *m_buttons;
    QPushButton *m_stop;
    QLabel *m_progress;
};
