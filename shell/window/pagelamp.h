#pragma once

// A lamp in the status bar for something that pages do in the background: its text is
// that of the page on display, or of the first page that does it. Hidden where none does.

#include <QLabel>
#include <QPointer>
#include <QVector>

class PageLamp : public QLabel
{
    Q_OBJECT

public:
    // toolTip: with "%1" for the number of pages.
    PageLamp(const QString &toolTip, QWidget *parent);

    // What the page is doing; an empty text: nothing.
    void setState(const QObject *page, const QString &text, bool isFailing);
    void showPage(const QObject *page);

private:
    void showState();

    struct State
    {
        const QObject *page;
        QString text;
        bool isFailing;
    };

    QString m_toolTip;
    QVector<State> m_states;
    QPointer<const QObject> m_page;
};
