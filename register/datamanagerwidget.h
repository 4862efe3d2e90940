#pragma once

// The register table: a window over pages of registers, which are edited,
// imported, exported and handed to its owner to be read from or written to a
// board. Holds the rows; sends nothing.

#include "qtframelessdialog.h"
#include "registercsv.h"

#include <memory>

class QButtonGroup;
class QLabel;
class QPushButton;
class QStandardItem;
class QStandardItemModel;
class QTableView;
class QtPageBar;

class DataManagerWidget : public QtFramelessDialog
{
    Q_OBJECT

public:
    static constexpr int rowsPerPage = 100;

    enum Mode { Read, Write };
    enum Mark { NoMark, Answered, Refused, Unanswered }; // how a row's request ended

    explicit DataManagerWidget(Mode mode, QWidget *parent = nullptr);
    ~DataManagerWidget() override;

    // Of all pages; empty ones included. Rows are counted from 0 over all pages.
    const QVector<RegisterRow> &rows() const { return m_rows; }
    void setValue(int row, const QString &value);
    // Shows the mark where the row's page is shown; it is the owner's to keep.
    void showMark(int row, Mark mark, const QString &why = {});

    // While the owner is at work the rows stay what they are, and it can be
    // stopped.
    void setBusy(bool busy);
    void showProgress(const QString &text);

    // Offers to save rows that no file has. False: the user wants to stay.
    bool mayClose();

public slots:
    void SltButtonClicked(int index); // in the order of the buttons
    void SltChangePage(int index);    // counted from 1

signals:
    void signalRefreshData(int pageIndex); // the owner is to put the page's marks back
    void signalChangePage(int index);
    void signalCloseWindow();
    void confirmed(); // the rows are to be read or written
    void stopRequested();
    void rowsMoved(); // what the owner noted about rows holds no more

protected:
    void hideEvent(QHideEvent *event) override;

private:
    void buildUi();
    void addPage();
    bool mayDeletePage(int page);
    void deletePage();
    void takeEdit(QStandardItem *item);
    void setRows(const QVector<RegisterRow> &rows);
    int usedRows() const;        // up to the last one that is not empty
    int shownRow(int row) const; // in the page shown, or -1
    bool exportTable();          // false when the user cancelled it, or it failed
    void importTable();
    void importSome();
    void endImport();
    void clearTable();

    Mode m_mode;
    QVector<RegisterRow> m_rows; // whole pages
    int m_page = 0;
    int m_deletedPage = 0;                         // counted from 0, like m_page
    bool m_isModified = false;                     // rows that no file has
    std::unique_ptr<RegisterCsv::Reader> m_reader; // while importing
    QTableView *m_view;
    QStandardItemModel *m_model;
    QtPageBar *m_pageBar;
    QButtonGroup *m_buttons;
    QPushButton *m_stop;
    QLabel *m_progress;
};
