#pragma once

// A command of the editor: an action that knows why it is not possible at
// present. Buttons and keys run it; where it is disabled, a key shows the
// reason instead of doing nothing.

#include <QAction>

class QAbstractButton;

class HexCommand : public QAction
{
    Q_OBJECT

public:
    HexCommand(const QString &text, const QList<QKeySequence> &keys, QObject *parent);

    // Disabled for that reason; enabled where it is empty.
    void setRefusal(const QString &reason);
    const QString &refusal() const { return m_refusal; }

    // The button runs it and is enabled with it.
    void bind(QAbstractButton *button);
    void enableWith(QWidget *widget);

    bool hasKey(const QKeyEvent *event) const;
    // The keys run it, enabled or not, while the widget's window is active.
    void listenIn(QWidget *widget);

public slots:
    void run(); // or shows why it is not possible

private:
    QString m_refusal;
};
