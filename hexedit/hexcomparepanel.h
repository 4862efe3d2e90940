#pragma once

// Compares the bytes in the editor with another file, or with the file as it was saved:
// side by side, with a list of the differences. Goes on while the bytes are edited. Owns
// the other bytes, which stay in their file.

#include "hexcompare.h"
#include "hexfilewatch.h"
#include "slicedtask.h"

#include <QTimer>
#include <QWidget>

#include <memory>

class HexCommand;
class HexCompareView;
class HexHitList;
class QHexEdit;
class QLabel;
class QPushButton;

class HexComparePanel : public QWidget
{
    Q_OBJECT

public:
    explicit HexComparePanel(QHexEdit *edit, QWidget *parent = nullptr);

    HexCommand *nextCommand() const { return m_next; }
    HexCommand *previousCommand() const { return m_previous; }

    void compareWithFile(const QString &fileName);
    void compareWithSaved();
    void close();

private:
    enum class With { Nothing, Saved, File };

    void buildUi();
    void chooseFile();
    bool isImage(const QString &fileName) const;
    void readImage(const QString &fileName);
    void restart(); // with the bytes as they are now
    void showResult();
    void showDifference(int index);
    void step(int direction);
    void showState();

    QHexEdit *m_edit;
    With m_with = With::Nothing;
    QString m_fileName;
    std::unique_ptr<HexBytes> m_other;
    class HexImageBytes *m_image = nullptr; // where m_other is at addresses
    qint64 m_elsewhere = 0;                 // bytes of an image that are at other addresses
    HexFileWatch m_watch;
    std::unique_ptr<HexCompare> m_compare; // shown
    qint64 m_faults = 0;                   // in the text of one
    bool m_wasModified = false;
    SlicedTask m_task;
    QTimer m_settle;
    HexCommand *m_next;
    HexCommand *m_previous;
    QPushButton *m_file;
    QPushButton *m_saved;
    QPushButton *m_align;
    QPushButton *m_reload;
    QLabel *m_summary;
    HexHitList *m_list;
    HexCompareView *m_view;
};
