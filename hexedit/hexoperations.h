#pragma once

// The menu "处理选中内容" of the editor: fills and changes the selection, inserts
// bytes. Each is one step of undo and work of the editor's task.

#include "hexoperationdialog.h"

#include <QMenu>

class HexCommand;
class QHexEdit;

class HexOperations : public QMenu
{
    Q_OBJECT

public:
    explicit HexOperations(QHexEdit *edit);

private:
    struct Job;

    HexCommand *add(const QString &text, const char *name, HexOperationDialog::Purpose purpose);
    void update();
    void ask(HexOperationDialog::Purpose purpose);
    QString refusal(const HexOperation &operation) const;
    void start(const HexOperation &operation, qint64 inserted);
    void end(Job &job, bool done);

    QHexEdit *m_edit;
    HexCommand *m_fill;
    HexCommand *m_insert;
    HexCommand *m_operate;
};
