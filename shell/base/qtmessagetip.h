#pragma once

// A notice that closes after a time. One instance for the process: a new text
// replaces the one shown. It is transparent for the mouse, and a press anywhere
// closes a bubble.

#include <QTimer>
#include <QWidget>

class QtMessageTip : public QWidget
{
    Q_OBJECT

public:
    enum Style {
        Bubble = 0, // red, with a pointer on its top edge: a hint beside a widget
        Notice = 1, // dark rounded box: a general notice
    };

    // A notice in the lower middle of the active window.
    static void showTip(const QString &text, int milliseconds = 2000);

    // At a position of the screen, which is the tip's top left corner.
    static void showTipAt(const QString &text, const QPoint &position, int milliseconds = 2000,
                          Style style = Bubble);

    // The bubble below a widget, its pointer near the widget's left edge.
    static void showBelow(const QWidget *widget, const QString &text, int milliseconds = 2000);

    // The one instance, made on first use; null while there is none.
    static QtMessageTip *current();

    QString text() const { return m_text; }
    Style tipStyle() const { return m_style; }
    int remainingTime() const { return m_timer.remainingTime(); }

public slots:
    void sltTimeOut();

protected:
    void paintEvent(QPaintEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QtMessageTip();
    static QtMessageTip *instance();
    void present(const QString &text, Style style, int milliseconds);
    void placeAt(const QPoint &position);

    void paintOn(QPaintDevice *device) const;
    void cutOut();
    void paintBubble(QPainter &painter) const;
    void paintNotice(QPainter &painter) const;

    QString m_text;
    Style m_style = Notice;
    QTimer m_timer;
};
