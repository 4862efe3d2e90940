#include "hexchangebar.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVariant>

HexChangeBar::HexChangeBar(QWidget *parent)
    : QWidget(parent)
    , m_text(new QLabel(this))
    , m_reload(new QPushButton(QStringLiteral("重新载入"), this))
{
    setObjectName(QStringLiteral("hexChangeBar"));
    m_text->setProperty("kind", "error");
    m_reload->setObjectName(QStringLiteral("btnReload"));
    auto *keep = new QPushButton(QStringLiteral("保留当前内容"), this);
    keep->setObjectName(QStringLiteral("btnKeepOurs"));
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(8);
    row->addWidget(m_text, 1);
    row->addWidget(m_reload);
    row->addWidget(keep);
    connect(m_reload, &QPushButton::clicked, this, &HexChangeBar::reloadWanted);
    connect(keep, &QPushButton::clicked, this, &HexChangeBar::keepWanted);
    hide();
}

void HexChangeBar::showChange(bool gone, bool edited)
{
    m_text->setText(gone ? QStringLiteral("文件已被其他程序删除或改名，内容仍在编辑器中")
                    : edited ? QStringLiteral("文件已被其他程序修改，重新载入将丢失未保存的修改")
                             : QStringLiteral("文件已被其他程序修改"));
    m_reload->setVisible(!gone);
    show();
}
