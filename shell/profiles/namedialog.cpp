#include "namedialog.h"

#include "dialoganswers.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

NameDialog::NameDialog(const QString &title, const QString &label, int maxLength, QWidget *parent)
    : QtFramelessDialog(title, parent)
    , m_name(new QLineEdit(this))
    , m_ok(new QPushButton(QStringLiteral("确定"), this))
{
    setObjectName(QStringLiteral("nameDialog"));
    m_name->setObjectName(QStringLiteral("editName"));
    m_name->setMaxLength(maxLength);
    m_name->setMinimumWidth(280);
    m_ok->setObjectName(QStringLiteral("btnNameOk"));
    m_ok->setProperty("primary", true);
    m_ok->setDefault(true);
    auto *cancel = new QPushButton(QStringLiteral("取消"), this);
    auto *caption = new QLabel(label, this);
    caption->setBuddy(m_name);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_ok);
    buttons->addWidget(cancel);
    body()->addWidget(caption);
    body()->addWidget(m_name);
    body()->addLayout(buttons);
    connect(m_ok, &QPushButton::clicked, this, &QDialog::accept);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_name, &QLineEdit::textChanged, this, [this] { m_ok->setEnabled(!name().isEmpty()); });
    m_ok->setEnabled(false);
    m_name->setFocus();
}

void NameDialog::setName(const QString &name)
{
    m_name->setText(name);
    m_name->selectAll();
}

QString NameDialog::name() const
{
    return m_name->text().trimmed();
}

QString NameDialog::ask(QWidget *parent, const QString &title, const QString &label, const QString &proposal,
                        int maxLength)
{
    if (const auto &answer = DialogAnswers::instance().name)
        return answer(title);
    NameDialog dialog(title, label, maxLength, parent);
    dialog.setName(proposal);
    return dialog.exec() == QDialog::Accepted ? dialog.name() : QString();
}
