#include "transferlogdialog.h"

#include "fonts.h"
#include "qtfiledialog.h"
#include "qtmessagebox.h"
#include "qtmessagetip.h"
#include "safefile.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

TransferLogDialog::TransferLogDialog(const QString &log, QWidget *parent)
    : QtFramelessDialog(QStringLiteral("传输日志"), parent)
    , m_text(new QPlainTextEdit(this))
{
    setObjectName(QStringLiteral("TransferLogDialog"));
    m_text->setObjectName(QStringLiteral("textTransferLog"));
    m_text->setReadOnly(true);
    m_text->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_text->setFont(Fonts::monospace());
    m_text->setPlainText(log);
    // What went wrong stands at the end.
    m_text->moveCursor(QTextCursor::End);

    auto *copyAll = new QPushButton(QStringLiteral("复制全部"), this);
    auto *saveAs = new QPushButton(QStringLiteral("保存到文件"), this);
    auto *done = new QPushButton(QStringLiteral("关闭"), this);
    done->setProperty("primary", true);
    done->setDefault(true);
    auto *row = new QHBoxLayout;
    row->setSpacing(8);
    row->addWidget(copyAll);
    row->addWidget(saveAs);
    row->addStretch();
    row->addWidget(done);
    body()->addWidget(m_text, 1);
    body()->addLayout(row);
    resize(760, 480);

    connect(copyAll, &QPushButton::clicked, this, [log] { QGuiApplication::clipboard()->setText(log); });
    connect(saveAs, &QPushButton::clicked, this, &TransferLogDialog::save);
    connect(done, &QPushButton::clicked, this, &QDialog::accept);
}

void TransferLogDialog::save()
{
    const QString name =
        QtFileDialog::getSaveFileName(this, QString(), QString(), QStringLiteral("文本文件(*.txt)"));
    if (name.isEmpty())
        return;
    QString error;
    if (SafeFile::write(name, m_text->toPlainText().toUtf8(), &error)) {
        QtMessageTip::showTip(QStringLiteral("文件保存完成!"));
        return;
    }
    QtMessageBox::warning(this, QStringLiteral("告警"), QStringLiteral("文件保存失败!\n%1").arg(error));
}
