#include "pictureactions.h"

#include "imageviewer.h"
#include "qtfiledialog.h"
#include "qtmessagebox.h"
#include "safefile.h"

#include <QApplication>
#include <QBuffer>
#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QHBoxLayout>
#include <QImageWriter>
#include <QPushButton>

namespace {

constexpr int kJpegQuality = 95;

const auto kWarning = QStringLiteral("告警");

bool write(const QPixmap &picture, const QString &fileName, QString *reason)
{
    const bool isJpeg = fileName.endsWith(QStringLiteral(".jpg"), Qt::CaseInsensitive) ||
                        fileName.endsWith(QStringLiteral(".jpeg"), Qt::CaseInsensitive);
    QBuffer content;
    content.open(QIODevice::WriteOnly);
    QImageWriter writer(&content, isJpeg ? "jpg" : "png");
    if (isJpeg)
        writer.setQuality(kJpegQuality);
    if (writer.write(picture.toImage()))
        return SafeFile::write(fileName, content.data(), reason);
    *reason = QStringLiteral("无法生成图片");
    return false;
}

} // namespace

PictureActions::PictureActions(const ImageViewer *viewer, QWidget *parent)
    : QWidget(parent)
    , m_viewer(viewer)
    , m_choice(new QComboBox(this))
{
    m_choice->setObjectName(QStringLiteral("comboPicture"));
    m_choice->setAccessibleName(QStringLiteral("要保存或复制的图像"));
    m_choice->addItems({QStringLiteral("图像1"), QStringLiteral("图像2")});
    m_choice->setVisible(false);
    auto *save = new QPushButton(QStringLiteral("保存图像"), this);
    save->setObjectName(QStringLiteral("btnSaveImage"));
    auto *copy = new QPushButton(QStringLiteral("复制图像"), this);
    copy->setObjectName(QStringLiteral("btnCopyImage"));
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(8);
    row->addStretch();
    row->addWidget(m_choice);
    row->addWidget(save);
    row->addWidget(copy);
    connect(save, &QPushButton::clicked, this, &PictureActions::save);
    connect(copy, &QPushButton::clicked, this, &PictureActions::copy);
}

void PictureActions::setTwo(bool two)
{
    m_choice->setVisible(two);
}

QPixmap PictureActions::chosen() const
{
    return m_viewer->image(m_viewer->displayCount() == 2 ? m_choice->currentIndex() : 0);
}

void PictureActions::save()
{
    const QPixmap picture = chosen(); // a newer one may be shown while the dialog is open
    if (picture.isNull()) {
        emit notify(Notice::error(QStringLiteral("还没有图像，无法保存！")));
        return;
    }
    const QString fileName = QtFileDialog::getSaveFileName(this, QStringLiteral("保存图像"), QString(),
                                                           QStringLiteral("PNG图片(*.png);;JPEG图片(*.jpg)"));
    if (fileName.isEmpty())
        return;
    const QString place = QDir::toNativeSeparators(fileName);
    QString reason;
    if (write(picture, fileName, &reason)) {
        emit notify(Notice::information(QStringLiteral("图像已保存：") + place));
        return;
    }
    emit notify(Notice::error(QStringLiteral("%1 保存失败：%2").arg(place, reason)));
    QtMessageBox::warning(this, kWarning, QStringLiteral("文件保存失败!"));
}

void PictureActions::copy()
{
    const QPixmap picture = chosen();
    if (picture.isNull()) {
        emit notify(Notice::error(QStringLiteral("还没有图像，无法复制！")));
        return;
    }
    QApplication::clipboard()->setImage(picture.toImage());
    emit notify(Notice::information(QStringLiteral("图像已复制到剪贴板。")));
}
