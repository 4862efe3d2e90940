#pragma once

// Asks every page once whether the program may end, on whatever way out the
// user takes. While a question is open, and after all have agreed, nobody is
// asked again; after a refusal the next attempt asks all anew.

#include <QVector>

class QtWidgetBase;

class QuitGuard
{
public:
    explicit QuitGuard(const QVector<QtWidgetBase *> &pages = {});

    // True when the program may end. False keeps it open: a page refused, or
    // is being asked at this moment.
    bool mayQuit();

private:
    enum class State { Open, Asking, Agreed };

    QVector<QtWidgetBase *> m_pages; // not owned
    State m_state = State::Open;
};
