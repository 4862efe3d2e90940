#pragma once

// Qt's file dialog as a child widget, asking its questions in the program's
// own boxes. Part of QtFileDialog.

#include <QFileDialog>

class EmbeddedFileDialog : public QFileDialog
{
    Q_OBJECT

public:
    explicit EmbeddedFileDialog(QWidget *parent);

    // What the accepting button always says: Qt renames it at a folder.
    void setAcceptText(const QString &text);
    // The name to save as, which stays when a folder is entered.
    void propose(const QString &name);

public slots:
    // After another name filter was chosen: "*.*" is meant to show all files,
    // those without a dot in their name as well.
    void applyFilter();

protected:
    void accept() override;

private:
    bool mayOverwrite();
    bool allExist();
    void takeOverDeleting();
    void deleteSelected();
    void showPlaces();

    QString m_acceptText;
    QString m_proposal;
};
