#include "qtwaitdialog.h"

#include "qttitlebar.h"
#include "waitingspinnerwidget.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

QtWaitDialog::QtWaitDialog(const QString &text, QWidget *parent)
    : QtFramelessDialog(QStringLiteral("请稍候"), parent)
    , m_text(new QLabel(this))
    , m_cancel(new QPushButton(QStringLiteral("取消"), this))
    , m_spinner(new WaitingSpinnerWidget(this))
{
    m_text->setObjectName(QStringLiteral("waitText"));
    m_text->setTextFormat(Qt::PlainText);
    m_text->setAlignment(Qt::AlignCenter);
    m_text->setWordWrap(true);
    m_text->setMinimumWidth(220);
    m_cancel->setObjectName(QStringLiteral("btnCancel"));
    m_cancel->setMinimumWidth(80);
    body()->addWidget(m_spinner, 0, Qt::AlignCenter);
    body()->addWidget(m_text);
    body()->addWidget(m_cancel, 0, Qt::AlignCenter);
    connect(m_cancel, &QPushButton::clicked, this, &QtWaitDialog::reject);
    setText(text);
    setCancelable(false);
}

void QtWaitDialog::setText(const QString &text)
{
    m_text->setText(text);
}

void QtWaitDialog::setCancelable(bool cancelable)
{
    m_cancelable = cancelable;
    m_cancel->setVisible(cancelable);
    titleBar()->setClosable(cancelable);
}

void QtWaitDialog::reject()
{
    if (m_cancelable)
        QtFramelessDialog::reject();
}

void QtWaitDialog::showEvent(QShowEvent *event)
{
    QtFramelessDialog::showEvent(event);
    m_spinner->start();
}

void QtWaitDialog::hideEvent(QHideEvent *event)
{
    m_spinner->stop();
    QtFramelessDialog::hideEvent(event);
}
