#include "cameraviewmenu.h"

#include "imageviewer.h"
#include "pixelformat.h"
#include "settings.h"

#include <QActionGroup>
#include <QMenu>

CameraViewMenu::CameraViewMenu(ImageViewer *viewer, QWidget *parent)
    : QPushButton(QStringLiteral("视图"), parent)
    , m_viewer(viewer)
    , m_formats(new QActionGroup(this))
{
    setObjectName(QStringLiteral("btnCameraView"));
    setToolTip(QStringLiteral("滚轮缩放图像，拖动移动，双击恢复；Shift+拖动选择直方图的区域"));
    setMenu(new QMenu(this));
    m_fit = addToggle(QStringLiteral("适应窗口"), "actionFitPicture");
    QAction *natural = menu()->addAction(QStringLiteral("恢复缩放前的大小"));
    natural->setObjectName(QStringLiteral("actionRestorePicture"));
    connect(natural, &QAction::triggered, this, [this] { m_viewer->setFitted(m_fit->isChecked()); });
    menu()->addSeparator();
    m_leftRight = addToggle(QStringLiteral("左右镜像"), "actionMirrorLeftRight");
    m_upDown = addToggle(QStringLiteral("上下镜像"), "actionMirrorUpDown");
    menu()->addSeparator();
    m_histogram = addToggle(QStringLiteral("直方图"), "actionHistogram");
    for (const QAction *action : {m_fit, m_leftRight, m_upDown, m_histogram})
        connect(action, &QAction::triggered, this, &CameraViewMenu::store);
    addFormats();
    load();
}

QAction *CameraViewMenu::addToggle(const QString &text, const char *name)
{
    QAction *action = menu()->addAction(text);
    action->setObjectName(QLatin1String(name));
    action->setCheckable(true);
    return action;
}

void CameraViewMenu::addFormats()
{
    QMenu *formats = menu()->addMenu(QStringLiteral("像素格式"));
    formats->setObjectName(QStringLiteral("menuPixelFormat"));
    const auto add = [this, formats](const QString &text, int choice) {
        QAction *action = formats->addAction(text);
        action->setObjectName(QStringLiteral("actionPixelFormat%1").arg(choice));
        action->setCheckable(true);
        action->setData(choice);
        m_formats->addAction(action);
    };
    add(QStringLiteral("按开发板声明"), 0);
    formats->addSeparator();
    for (const PixelFormat &format : PixelFormat::all()) {
        if (!format.isAnnounced())
            add(format.name, format.choice());
    }
    connect(m_formats, &QActionGroup::triggered, this, [](const QAction *action) {
        Settings::instance().cameraPage.pictureFormat.change(action->data().toInt());
    });
}

void CameraViewMenu::load()
{
    const auto &choices = Settings::instance().cameraPage;
    m_fit->setChecked(choices.zoom == 1);
    m_leftRight->setChecked(choices.mirror & ImageViewer::LeftRight);
    m_upDown->setChecked(choices.mirror & ImageViewer::UpDown);
    m_viewer->setFitted(m_fit->isChecked());
    m_viewer->setMirror(choices.mirror);
    m_histogram->setChecked(choices.histogram);
    emit histogramWanted(choices.histogram);
    m_formats->actions().constFirst()->setChecked(true); // where the number is unknown
    for (QAction *action : m_formats->actions()) {
        if (action->data().toInt() == choices.pictureFormat)
            action->setChecked(true);
    }
}

void CameraViewMenu::store()
{
    auto &choices = Settings::instance().cameraPage;
    choices.zoom.change(m_fit->isChecked() ? 1 : 0);
    choices.mirror.change((m_leftRight->isChecked() ? ImageViewer::LeftRight : 0) |
                          (m_upDown->isChecked() ? ImageViewer::UpDown : 0));
    choices.histogram.change(m_histogram->isChecked());
    load();
}
