#pragma once

// The file dialog: Qt's own one inside the program's frame, so that the skins
// apply to it. Pages use the static helpers, which ask DialogAnswers first and
// remember the last folder for the rest of the run.

#include "qtframelessdialog.h"

#include <QStringList>

class EmbeddedFileDialog;
class QLineEdit;

class QtFileDialog : public QtFramelessDialog
{
    Q_OBJECT

public:
    enum Mode { OpenFile, OpenFiles, SaveFile, Folder };

    // An empty caption becomes "文件选择框"; an empty folder the last one used.
    QtFileDialog(Mode mode, const QString &caption, const QString &folder, const QString &filter,
                 QWidget *parent = nullptr);

    QStringList selectedFiles() const;
    QString selectedFilter() const;

    // Each returns an empty path (or list) when cancelled. The save form adds
    // the chosen filter's suffix where none was typed and asks before it
    // overwrites. `selectedFilter` sets the filter shown first, and afterwards
    // holds the chosen one.
    static QString getOpenFileName(QWidget *parent = nullptr, const QString &caption = {},
                                   const QString &dir = {}, const QString &filter = {},
                                   QString *selectedFilter = nullptr);
    static QStringList getOpenFileNames(QWidget *parent = nullptr, const QString &caption = {},
                                        const QString &dir = {}, const QString &filter = {},
                                        QString *selectedFilter = nullptr);
    static QString getSaveFileName(QWidget *parent = nullptr, const QString &caption = {},
                                   const QString &dir = {}, const QString &filter = {},
                                   QString *selectedFilter = nullptr);

    // A folder that exists, without a trailing slash.
    static QString getFolder(QWidget *parent, const QString &caption, const QString &dir);

    // The suffix that a filter such as "文本文件(*.txt)" stands for, without the
    // dot; empty for "*.*" and "*".
    static QString suffixOf(const QString &filter);

public slots:
    void onFileDialogFinished(int result);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    static QStringList run(Mode mode, QWidget *parent, const QString &caption, const QString &dir,
                           const QString &filter, QString *selectedFilter);
    void drawIcons();

    EmbeddedFileDialog *m_dialog;
    QLineEdit *m_name = nullptr;
};
