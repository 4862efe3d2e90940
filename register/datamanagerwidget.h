#pragma once

// The dialog of a register table: shows its rows page by page, edits, imports
// and exports them, and asks its owner to read them from a board or to write them
// to it. The rows are the model's, the page is the page bar's; sends nothing.

#include "qtframelessdialog.h"
#include "registerfile.h"

class QButtonGroup;
class QLabel;
class QPushButton;
class QTableView;
class QtPageBar;
class RegisterPageModel;
class RegisterTableModel;

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

    // Offers to save rows that no file has. False: the user wants to stay.
    bool mayClose();

public slots:
    void SltButtonClicked(int index); // in the order of the buttons
    void SltChangePage(int index);    // counted from 1

signals:
    void signalRefreshData(int pageIndex); // that page is shown
    void signalChangePage(int index);
    void signalCloseWindow();
    void confirmed(); // the rows are to be read or written
    void stopRequested();

protected:
    void hideEvent(QHideEvent *event) override;

private:
    void buildUi();
    void connectParts();
    void addPage();
    bool askToDeletePage(int page);
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
    QTableView *m_view;
    QtPageBar *m_pageBar;
    RegisterPageModel *m_page;
    QButtonGroup *m_buttons;
    QPushButton *m_stop;
    QLabel *m_progress;
};
