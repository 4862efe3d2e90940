#pragma once

// The program's question and warning box. Pages use the static helpers, which
// ask DialogAnswers first. Return is "确定" or "保存"; Esc and the title's X are
// "取消".

#include "qtframelessdialog.h"

#include <QClipboard>

class QLabel;
class QPushButton;

class QtMessageBox : public QtFramelessDialog
{
    Q_OBJECT

public:
    enum Type { Done = 0, Question = 1, Warning = 2, Success = 3, Information = 4, Failure = 5 };
    enum Buttons { OkCancel, OkOnly, SaveDiscardCancel };
    // The answer about something that would be lost.
    enum SaveAnswer { Cancel = 0, Save = 1, Discard = 2 };

    explicit QtMessageBox(QWidget *parent = nullptr);

    // Title ("提示" where it is empty), text and the type's icon; a type
    // without an icon shows none.
    void setMessage(const QString &title, const QString &text, int type);
    void setButtons(Buttons buttons);
    QString text() const { return m_text; }

    // Each runs the box modally; 1 when "确定" was pressed, otherwise 0.
    static int question(QWidget *parent, const QString &title, const QString &text);
    static int warning(QWidget *parent, const QString &title, const QString &text, Buttons buttons = OkOnly);
    static int information(QWidget *parent, const QString &title, const QString &text);

    // Before something unsaved is lost: "保存", "不保存" or "取消". Esc and the
    // title's X are Cancel: the caller then changes nothing.
    static SaveAnswer saveQuestion(QWidget *parent, const QString &title, const QString &text);

public slots:
    void SltBtnOkClicked();
    void SltBtnCancelClicked();

private:
    void dropBreakMarks(QClipboard::Mode mode); // from text copied out of the box
    static int run(QWidget *parent, const QString &title, const QString &text, int type, Buttons buttons);

    QString m_text;
    QLabel *m_icon;
    QLabel *m_label;
    QPushButton *m_ok; // "保存" where that is an answer
    QPushButton *m_discard;
    QPushButton *m_cancel;
};
