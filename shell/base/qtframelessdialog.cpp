#include "qtframelessdialog.h"

#include "fieldbehavior.h"
#include "framegeometry.h"
#include "framelesshelper.h"
#include "qttitlebar.h"

#include <QScreen>
#include <QVBoxLayout>

QtFramelessDialog::QtFramelessDialog(const QString &title, QWidget *parent)
    : QDialog(parent)
    , m_titleBar(new QtTitleBar(QtTitleBar::DialogButtons, this))
    , m_body(new QVBoxLayout)
    , m_frame(new FramelessHelper(this))
{
    FieldBehavior::install();
    setModal(true);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(1, 1, 1, 1);
    layout->setSpacing(0);
    layout->addWidget(m_titleBar);
    layout->addLayout(m_body, 1);
    m_body->setContentsMargins(16, 16, 16, 16);
    m_body->setSpacing(8);

    m_frame->setMoveHandle(m_titleBar);
    m_frame->setResizable(false);
    connect(m_titleBar, &QtTitleBar::signalCloseWindow, this, &QDialog::reject);
    setTitle(title);
}

void QtFramelessDialog::setTitle(const QString &title)
{
    setWindowTitle(title);
    m_titleBar->setTitle(title);
}

QString QtFramelessDialog::title() const
{
    return m_titleBar->title();
}

void QtFramelessDialog::paintEvent(QPaintEvent *)
{
    FramelessHelper::paintOutline(this);
}

// Over the middle of its window, and wholly on the screen.
void QtFramelessDialog::showEvent(QShowEvent *event)
{
    FieldBehavior::nameIconButtons(this);
    QDialog::showEvent(event);
    if (m_placed || !parentWidget())
        return;
    m_placed = true;
    QRect place(QPoint(0, 0), size());
    place.moveCenter(parentWidget()->window()->geometry().center());
    move(FrameGeometry::keptInside(place, screen()->availableGeometry()).topLeft());
}
