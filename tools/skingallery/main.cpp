// Paints every kind of widget and every dialog of the shell in the three skins
// and saves the pictures, for looking at:
//   skin_gallery <folder>
// or the five tools at the window's usual sizes:
//   skin_gallery <folder> tools

#include "apppaths.h"
#include "formpanel.h"
#include "mainwindow.h"
#include "noticelist.h"
#include "qtfiledialog.h"
#include "qtmessagebox.h"
#include "qtmessagetip.h"
#include "qtpagebar.h"
#include "qtrollsubtitleswidget.h"
#include "qtstatusbar.h"
#include "qtstyledialog.h"
#include "qtwaitdialog.h"
#include "skin.h"
#include "startup.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QSpinBox>
#include <QStackedWidget>
#include <QTabBar>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

QWidget *buttons()
{
    auto *row = new QWidget;
    auto *layout = new QHBoxLayout(row);
    auto add = [layout](QPushButton *button) {
        layout->addWidget(button);
        return button;
    };
    add(new QPushButton(QStringLiteral("普通")));
    add(new QPushButton(QStringLiteral("主要")))->setProperty("primary", true);
    add(new QPushButton(QStringLiteral("禁用")))->setEnabled(false);
    auto *off = add(new QPushButton(QStringLiteral("主要禁用")));
    off->setProperty("primary", true);
    off->setEnabled(false);
    auto *checked = add(new QPushButton(QStringLiteral("选中")));
    checked->setCheckable(true);
    checked->setChecked(true);
    add(new QPushButton(QStringLiteral("平面")))->setFlat(true);
    add(new QPushButton(QStringLiteral("默认")))->setDefault(true);
    auto *tool = new QToolButton;
    tool->setText(QStringLiteral("工具"));
    layout->addWidget(tool);
    layout->addStretch();
    return row;
}

QWidget *fields()
{
    auto *row = new QWidget;
    auto *layout = new QHBoxLayout(row);
    auto *line = new QLineEdit(QStringLiteral("文本 text"));
    auto *readOnly = new QLineEdit(QStringLiteral("只读"));
    readOnly->setReadOnly(true);
    auto *off = new QLineEdit(QStringLiteral("禁用"));
    off->setEnabled(false);
    auto *combo = new QComboBox;
    combo->addItems({QStringLiteral("115200"), QStringLiteral("9600")});
    auto *editable = new QComboBox;
    editable->setEditable(true);
    editable->addItem(QStringLiteral("COM3 可编辑"));
    auto *comboOff = new QComboBox;
    comboOff->addItem(QStringLiteral("禁用"));
    comboOff->setEnabled(false);
    auto *spin = new QSpinBox;
    spin->setRange(0, 5000);
    spin->setValue(1000);
    for (QWidget *field : std::initializer_list<QWidget *>{line, readOnly, off, combo, editable, comboOff,
                                                           spin, new QPushButton(QStringLiteral("按钮"))})
        layout->addWidget(field);
    return row;
}

QWidget *choices()
{
    auto *row = new QWidget;
    auto *layout = new QHBoxLayout(row);
    for (int state = 0; state < 4; ++state) {
        auto *box = new QCheckBox(QStringLiteral("复选%1").arg(state));
        box->setChecked(state & 1);
        box->setEnabled(state < 2);
        layout->addWidget(box);
    }
    for (int state = 0; state < 4; ++state) {
        auto *radio = new QRadioButton(QStringLiteral("单选%1").arg(state));
        radio->setAutoExclusive(false);
        radio->setChecked(state & 1);
        radio->setEnabled(state < 2);
        layout->addWidget(radio);
    }
    auto *error = new QLabel(QStringLiteral("错误提示"));
    error->setProperty("kind", "error");
    layout->addWidget(error);
    layout->addStretch();
    return row;
}

QWidget *panel()
{
    auto *form = new FormPanel;
    FormGroup *port = form->addGroup(QStringLiteral("串口配置"));
    for (const auto *label : {"端口", "波特率", "数据位"}) {
        auto *combo = new QComboBox;
        combo->addItem(QStringLiteral("115200"));
        port->addRow(QString::fromUtf8(label), combo);
    }
    auto *open = new QPushButton(QStringLiteral("打开串口"));
    open->setProperty("primary", true);
    port->addWide(open);
    FormGroup *receive = form->addGroup(QStringLiteral("接收区设置"));
    receive->addPair(new QRadioButton(QStringLiteral("字符串显示")),
                     new QRadioButton(QStringLiteral("十六进制显示")));
    receive->addPair(new QCheckBox(QStringLiteral("停止显示")), new QCheckBox(QStringLiteral("日志模式")));
    receive->addPair(new QPushButton(QStringLiteral("清空接收区")),
                     new QPushButton(QStringLiteral("保存到文件")));
    return form;
}

QWidget *views()
{
    auto *row = new QWidget;
    auto *layout = new QHBoxLayout(row);
    auto *table = new QTableWidget(6, 3);
    table->setAlternatingRowColors(true);
    table->setHorizontalHeaderLabels({QStringLiteral("地址"), QStringLiteral("值"), QStringLiteral("说明")});
    for (int r = 0; r < 6; ++r)
        for (int c = 0; c < 3; ++c) {
            auto *item = new QTableWidgetItem(QStringLiteral("单元%1").arg(r * 3 + c));
            if (r == 2)
                item->setFlags(Qt::NoItemFlags);
            table->setItem(r, c, item);
        }
    table->selectRow(1);
    auto *tree = new QTreeWidget;
    tree->setHeaderLabel(QStringLiteral("树"));
    auto *root = new QTreeWidgetItem(tree, {QStringLiteral("客户端")});
    new QTreeWidgetItem(root, {QStringLiteral("192.168.1.2")});
    new QTreeWidgetItem(new QTreeWidgetItem(tree, {QStringLiteral("收起")}), {QStringLiteral("x")});
    root->setExpanded(true);
    auto *text = new QPlainTextEdit;
    text->setPlainText(QStringLiteral("多行文本\n").repeated(40));
    layout->addWidget(table, 2);
    layout->addWidget(tree, 1);
    layout->addWidget(text, 1);
    return row;
}

QWidget *gallery()
{
    auto *page = new QWidget;
    auto *layout = new QHBoxLayout(page);
    layout->setContentsMargins(8, 8, 8, 8);
    layout->addWidget(panel());
    auto *right = new QVBoxLayout;
    right->setSpacing(0);
    right->addWidget(buttons());
    right->addWidget(fields());
    right->addWidget(choices());
    right->addWidget(views(), 1);
    auto *tabs = new QTabWidget;
    auto *bars = new QWidget;
    auto *barLayout = new QVBoxLayout(bars);
    auto *progress = new QProgressBar;
    progress->setValue(60);
    auto *slider = new QSlider(Qt::Horizontal);
    slider->setValue(40);
    auto *pages = new QtPageBar;
    pages->reset(100);
    barLayout->addWidget(progress);
    barLayout->addWidget(slider);
    barLayout->addWidget(pages);
    tabs->addTab(bars, QStringLiteral("单项发送"));
    tabs->addTab(new QWidget, QStringLiteral("多项发送"));
    tabs->addTab(new QWidget, QStringLiteral("发送文件"));
    right->addWidget(tabs);
    layout->addLayout(right, 1);
    return page;
}

void saveOpen(QWidget *popup, const QString &name)
{
    QApplication::processEvents();
    popup->grab().save(name);
    popup->close();
}

void save(QWidget *widget, const QString &name)
{
    widget->show();
    QApplication::processEvents();
    widget->grab().save(name);
    widget->close();
}

void saveTools(MainWindow *window, const QString &path)
{
    const std::initializer_list<QSize> sizes{{800, 500}, {1000, 550}, {1920, 1080}};
    auto *tabs = window->findChild<QTabBar *>(QStringLiteral("toolTabs"));
    auto *stack = window->findChild<QStackedWidget *>(QStringLiteral("pageStack"));
    window->show();
    for (const QSize &size : sizes) {
        window->resize(size);
        for (int tool = 0; tool < tabs->count(); ++tool) {
            tabs->setCurrentIndex(tool);
            stack->setCurrentIndex(tool);
            QApplication::processEvents();
            window->grab().save(QStringLiteral("%1-%2-%3.png").arg(path).arg(size.width()).arg(tool));
        }
    }
    tabs->setCurrentIndex(0);
    window->resize(1000, 550);
    stack->setCurrentIndex(0);
    auto *sendPages = stack->widget(0)->findChild<QComboBox *>(QStringLiteral("comboSendPage"));
    for (int page = 1; page < sendPages->count(); ++page) {
        sendPages->setCurrentIndex(page);
        QApplication::processEvents();
        window->grab().save(QStringLiteral("%1-send-%2.png").arg(path).arg(page));
    }
    stack->setCurrentIndex(1);
    for (const char *name : {"comboCameraProtocol", "comboImageFormat"}) {
        auto *box = window->findChild<QComboBox *>(QLatin1String(name));
        box->showPopup();
        QApplication::processEvents();
        box->view()->window()->grab().save(QStringLiteral("%1-%2.png").arg(path, QLatin1String(name)));
        box->hidePopup();
    }
    window->hide();
}

} // namespace

int main(int argc, char *argv[])
{
    Startup::setAttributes();
    QApplication application(argc, argv);
    const QTemporaryDir root;
    AppPaths::setRoot(root.path());
    Startup::prepare(application);
    const QString folder = application.arguments().value(1, QStringLiteral("."));
    QDir().mkpath(folder);

    for (int skin = 0; skin < 3; ++skin) {
        Skin::apply(skin);
        const auto path = [&](const char *name) {
            return QStringLiteral("%1/%2-%3.png").arg(folder, Skin::palette().name, QLatin1String(name));
        };
        auto window = std::make_unique<MainWindow>();
        if (application.arguments().value(2) == QLatin1String("tools")) {
            saveTools(window.get(), QStringLiteral("%1/%2").arg(folder, Skin::palette().name));
            continue;
        }
        window->resize(1000, 620);
        auto *stack = window->findChild<QStackedWidget *>(QStringLiteral("pageStack"));
        stack->setCurrentIndex(stack->addWidget(gallery()));
        auto *status = window->findChild<QtStatusBar *>();
        status->showCounts({QStringLiteral("123456"), QStringLiteral("7890")});
        status->showSystemNotify(QStringLiteral("串口[COM3]打开失败!!!"), Notice::Error);
        window->show();
        QApplication::processEvents();
        window->grab().save(path("widgets"));
        status->sltShowRecent();
        saveOpen(window->findChild<NoticeList *>(), path("notices"));
        for (const bool editable : {false, true}) {
            QComboBox box;
            box.setEditable(editable);
            box.addItems({QStringLiteral("9600"), QStringLiteral("115200"), QStringLiteral("无校验")});
            box.show();
            box.showPopup();
            saveOpen(box.view()->window(), path(editable ? "popup-editable" : "popup"));
        }

        auto *menu = window->findChild<QMenu *>(QStringLiteral("settingsMenu"));
        save(menu, path("menu"));
        save(menu->findChild<QMenu *>(), path("submenu"));
        QtMessageBox question;
        question.setMessage(QStringLiteral("询问"), QStringLiteral("确认恢复默认设置吗?"),
                            QtMessageBox::Question);
        save(&question, path("question"));
        QtMessageBox unsaved;
        unsaved.setMessage(QString(), QStringLiteral("当前有数据未保存，是否保存接收数据?"),
                           QtMessageBox::Question);
        unsaved.setButtons(QtMessageBox::SaveDiscardCancel);
        save(&unsaved, path("unsaved"));
        QtMessageBox warning;
        warning.setMessage(
            QStringLiteral("告警"),
            QStringLiteral("文件保存失败：/home/user/very/long/path/that/does/not/fit/in/one/line/at/all/"
                           "data.bin，请检查磁盘空间后重试。"),
            QtMessageBox::Warning);
        warning.setButtons(QtMessageBox::OkOnly);
        save(&warning, path("warning"));
        QtFileDialog open(QtFileDialog::SaveFile, QString(), QStringLiteral("/usr"),
                          QStringLiteral("文本文件(*.txt);;所有文件(*.*)"));
        save(&open, path("file"));
        QtWaitDialog wait(QStringLiteral("正在等待设备响应..."));
        wait.setCancelable(true);
        save(&wait, path("wait"));
        QtStyleDialog style(QtStyleDialog::ReceiveArea);
        save(&style, path("style"));
        window->hide();
    }
    QtMessageTip::showTipAt(QStringLiteral("当前设置超出范围！"), {50, 50});
    QtMessageTip::current()->grab().save(folder + QStringLiteral("/tip-bubble.png"));
    QtMessageTip::showTip(QStringLiteral("配置已恢复！"));
    QtMessageTip::current()->grab().save(folder + QStringLiteral("/tip-notice.png"));
    return 0;
}
