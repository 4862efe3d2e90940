#pragma once

// The files that are to be sent, in order: chosen or dropped here, moved and
// removed one by one. Shows names and sizes.

#include <QListWidget>

class QLabel;

class FileList : public QListWidget
{
    Q_OBJECT

public:
    explicit FileList(QWidget *parent = nullptr);

    QStringList files() const; // full names
    // The only selected one; empty where there are none or several.
    QString selectedFile() const;
    // Those that are not there yet.
    void addFiles(const QStringList &names);
    void clearFiles();
    // Looks at the files again: they may have been rewritten since.
    void describe();
    // While it is locked the user changes nothing.
    void setLocked(bool locked);

    void removeSelected();
    void moveSelected(int by); // rows

signals:
    void filesChanged();

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    void handleChange();

    QLabel *m_hint;
    bool m_isLocked = false;
};
