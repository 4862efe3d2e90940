// Message box, file dialog, wait dialog and style dialog, driven as a user
// would drive them.

#include "apppaths.h"
#include "colorswatches.h"
#include "contrast.h"
#include "dialoganswers.h"
#include "huesaturationfield.h"
#include "iconfont.h"
#include "qtcolorpanel.h"
#include "qtfiledialog.h"
#include "qtmessagebox.h"
#include "qtstyledialog.h"
#include "qtwaitdialog.h"
#include "repaints.h"
#include "settings.h"
#include "skin.h"
#include "testfiles.h"
#include "waitingspinnerwidget.h"

#include <QtTest>
#include <QtWidgets>

namespace {

// Acts on the modal dialog that comes up next.
template <typename Act> void whenModal(Act act)
{
    QTimer::singleShot(0, qApp, [act] {
        QWidget *dialog = QApplication::activeModalWidget();
        QVERIFY(dialog);
        act(dialog);
    });
}

// A button by its name, a key, or the window's close.
void answer(QWidget *dialog, const QString &how)
{
    if (how == "return" || how == "escape")
        QTest::keyClick(dialog, how == "return" ? Qt::Key_Return : Qt::Key_Escape);
    else if (auto *button = dialog->findChild<QPushButton *>(how))
        button->click();
    else
        dialog->findChild<QToolButton *>("btnClose")->click();
}

// Types a name into the file dialog on display and accepts it.
void typeName(QWidget *dialog, const QString &name)
{
    auto *edit = dialog->findChild<QLineEdit *>("fileNameEdit");
    edit->setText(name);
    QTest::keyClick(edit, Qt::Key_Return);
}

void typeColor(QWidget *dialog, const char *panel, const QString &color)
{
    auto *hex = dialog->findChild<QWidget *>(panel)->findChild<QLineEdit *>("hexField");
    hex->selectAll();
    QTest::keyClicks(hex, color);
}

} // namespace

class DialogsTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_root = std::make_unique<QTemporaryDir>();
        AppPaths::setRoot(m_root->path());
        Settings::instance() = Settings();
        qputenv("HOME", QFile::encodeName(m_root->path()));
    }
    void cleanup() { DialogAnswers::instance() = {}; }

    // Esc means stay; a question that may lose something has no default answer.
    void answersQuestions()
    {
        const std::tuple<const char *, int, QtMessageBox::SaveAnswer> rows[] = {
            {"btnOk", 1, QtMessageBox::Save},    {"btnCancel", 0, QtMessageBox::Cancel},
            {"return", 1, QtMessageBox::Cancel}, {"escape", 0, QtMessageBox::Cancel},
            {"close", 0, QtMessageBox::Cancel},  {"btnDiscard", -1, QtMessageBox::Discard}};
        for (const auto &[how, question, saveQuestion] : rows) {
            const auto act = [name = how](QWidget *box) {
                QVERIFY(static_cast<QtMessageBox *>(box)->text().endsWith("?"));
                answer(box, name);
            };
            whenModal(act);
            QCOMPARE(QtMessageBox::saveQuestion(nullptr, {}, "保存?"), saveQuestion);
            if (question < 0)
                continue;
            whenModal(act);
            QCOMPARE(QtMessageBox::question(nullptr, "询问", "继续?"), question);
        }
    }

    void drawsTheIconOfTheKind()
    {
        whenModal([](QWidget *box) {
            QCOMPARE(static_cast<QtMessageBox *>(box)->text() + box->windowTitle(), QString("文字标题"));
            answer(box, "btnOk");
        });
        QtMessageBox::warning(nullptr, "标题", "文字");
        const std::tuple<int, int, const char *> looks[] = {
            {0, 50, "#34c388"}, {1, 50, "#f86934"}, {4, 60, "#34c388"}, {5, 60, "#f86934"}};
        QtMessageBox box;
        auto *icon = box.findChild<QLabel *>("msgBoxIcon");
        for (const auto &[kind, side, color] : looks) {
            box.setMessage({}, "x", kind);
            const QImage image = icon->pixmap(Qt::ReturnByValue).toImage();
            QCOMPARE(image.size(), QSize(side, side));
            int painted = 0;
            for (int i = 0; i < side * side; ++i)
                painted += image.pixelColor(i % side, i / side) == QColor(color);
            QVERIFY2(painted > 100, qPrintable(QString::number(kind)));
        }
        box.setMessage({}, "x", 6);
        QVERIFY(!icon->isVisibleTo(&box) && box.title() == "提示");
        box.setButtons(QtMessageBox::SaveDiscardCancel);
        QCOMPARE(box.findChild<QPushButton *>("btnOk")->text(), QString("保存"));
        box.setButtons(QtMessageBox::OkOnly);
        QVERIFY(!box.findChild<QPushButton *>("btnCancel")->isVisibleTo(&box));
    }

    void wrapsLongMessages()
    {
        QtMessageBox box;
        box.setMessage({}, QString("/a-folder-name-without-spaces").repeated(30), QtMessageBox::Warning);
        box.show();
        auto *label = box.findChild<QLabel *>("msgBoxText");
        QVERIFY(box.width() < 600 && box.height() > 150 && label->width() <= 400);
        label->setSelection(0, label->text().size());
        QTest::keySequence(label, QKeySequence::Copy);
        QTRY_COMPARE(QApplication::clipboard()->text(), box.text()); // without the places to break
        box.setMessage({}, "12345678/1 6中" + QString(47, 'x') + "😀", QtMessageBox::Warning);
        QCOMPARE(label->text().replace(QChar(0x200B), '|'),
                 "12345678/|1 6中" + QString(24, 'x') + '|' + QString(23, 'x') + "😀");
        box.setMessage({}, QString("一行很长的文字 ").repeated(2000), QtMessageBox::Warning);
        QtMessageBox huge;
        huge.setMessage({}, box.text(), QtMessageBox::Warning);
        huge.show();
        QVERIFY(huge.height() < 500);
        QVERIFY(huge.findChild<QPushButton *>("btnOk")->geometry().bottom() < huge.height());
    }

    void opensFiles()
    {
        const QString path = touch("数据.txt");
        touch("Makefile");
        whenModal([](QWidget *dialog) { dialog->close(); });
        QVERIFY(QtFileDialog::getOpenFileName(nullptr, {}, path).isEmpty());
        whenModal([](QWidget *dialog) { typeName(dialog, "数据.txt"); });
        QCOMPARE(QtFileDialog::getOpenFileName(nullptr, {}, m_root->path()), path);
        // The folder is remembered; a name that does not exist is refused; all
        // files are shown by the filter for them.
        QString chosen = "所有文件(*.*)";
        whenModal([](QWidget *dialog) {
            auto *list = dialog->findChild<QListView *>("listView");
            QTRY_COMPARE(list->model()->rowCount(list->rootIndex()), 2);
            int refused = 0;
            DialogAnswers::instance().message = [&](const QString &, const QString &, int) {
                return ++refused;
            };
            typeName(dialog, "没有.txt");
            QVERIFY(dialog->isVisible() && refused == 1);
            typeName(dialog, "数据.txt");
        });
        QCOMPARE(QtFileDialog::getOpenFileName(nullptr, {}, {}, "数据文件(*.bin);;所有文件(*.*)", &chosen),
                 path);
        QtFileDialog named(QtFileDialog::SaveFile, {}, "name.txt", {});
        QCOMPARE(named.findChild<QFileDialog *>()->directory(), QDir(m_root->path()));
    }

    void savesFiles()
    {
        const std::tuple<QString, QString, QString> rows[] = {
            {"文本文件(*.txt)", "out", "out.bin"}, // then another filter is chosen
            {QString(), "out.log", "out.log"},
            {"所有文件(*.*)", "plain", "plain"},
            {"文本文件(*.txt)", "old", "old.txt"}}; // there already
        touch("old.txt");
        for (auto [filter, typed, saved] : rows) {
            int asked = 0;
            DialogAnswers::instance().message = [&asked, name = saved](auto, const QString &text, int) {
                return text.contains(name) && ++asked == 2 ? 1 : 0;
            };
            whenModal([name = typed](QWidget *dialog) {
                if (name == "out")
                    QTest::keyClick(dialog->findChild<QComboBox *>("fileTypeCombo"), Qt::Key_Down);
                typeName(dialog, name);
                if (dialog->isVisible()) // the first answer: not over the old one
                    typeName(dialog, name);
            });
            QCOMPARE(QtFileDialog::getSaveFileName(nullptr, {}, m_root->path(),
                                                   "文本文件(*.txt);;数据文件(*.bin);;所有文件(*.*)",
                                                   filter.isEmpty() ? nullptr : &filter),
                     m_root->filePath(saved));
            QCOMPARE(asked, saved == "old.txt" ? 2 : 0);
            QVERIFY(typed != "out" || filter == "数据文件(*.bin)");
        }
    }

    void proposesANameWhenSaving()
    {
        QVERIFY(QDir(m_root->path()).mkdir("folder"));
        QList<QUrl> places{QUrl("file:")};
        for (const auto place : {QStandardPaths::HomeLocation, QStandardPaths::DesktopLocation}) { // not all
            places.append(QUrl::fromLocalFile(QStandardPaths::writableLocation(place)));
            QVERIFY(QDir().mkpath(places.last().toLocalFile()));
        }
        QtFileDialog save(QtFileDialog::SaveFile, {}, m_root->path(), "文本文件(*.txt)");
        auto *inner = save.findChild<QFileDialog *>();
        auto *name = save.findChild<QLineEdit *>("fileNameEdit");
        const QRegularExpression proposal("^数据_\\d{8}_\\d{6}\\.txt$");
        QVERIFY2(name->text().contains(proposal), qPrintable(name->text()));
        QCOMPARE(inner->labelText(QFileDialog::LookIn), QString("文件目录："));
        QCOMPARE(save.findChild<QFileSystemModel *>()->nameFilters(), QStringList("*.txt"));
        save.show();
        typeName(&save, "folder");
        QTRY_COMPARE(inner->directory().dirName(), QString("folder"));
        QVERIFY(inner->isVisible() && inner->y() >= 32 && inner->width() > 700); // below the title bar
        auto *button = save.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Save);
        QTRY_COMPARE(button->text(), QString("保存"));
        QVERIFY(save.isVisible() && name->text().contains(proposal));
        QCOMPARE(inner->sidebarUrls(), places);
        const QHeaderView *columns = save.findChild<QTreeView *>("treeView")->header();
        QCOMPARE(columns->sectionResizeMode(0), QHeaderView::Stretch);
        QCOMPARE(columns->sectionResizeMode(3), QHeaderView::ResizeToContents); // a whole date
        QVERIFY(!inner->isSizeGripEnabled());
        const auto *back = save.findChild<QToolButton *>("backButton");
        QCOMPARE(back->icon().pixmap(16).toImage(),
                 IconFont::icon(IconFont::ChevronLeft, Skin::palette().text).pixmap(16).toImage());
        QWidget *proposals = name->completer()->popup();
        proposals->resize(200, 50);
        proposals->show();
        proposals->move(3, 4);
        QCOMPARE(proposals->pos(), name->mapToGlobal({0, name->height()}));
    }

    void asksBeforeItDeletesAFile()
    {
        const QString path = touch("a.txt");
        QVERIFY(QDir(m_root->path()).mkdir("folder"));
        QtFileDialog open(QtFileDialog::OpenFile, {}, path, "所有文件(*.*)");
        open.show();
        QCOMPARE(open.findChild<QFileDialog *>()->directory(), QDir(m_root->path())); // not the last one
        auto *list = open.findChild<QListView *>("listView");
        auto *model = open.findChild<QFileSystemModel *>();
        QTRY_VERIFY(model->index(path).isValid());
        QCOMPARE(model->nameFilters(), QStringList("*")); // with names that have no dot
        // Qt takes the button for one that opens folders.
        auto *button = open.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Open);
        QCOMPARE(button->text(), QString("确定"));
        open.findChild<QLineEdit *>("fileNameEdit")->setText("folder");
        QTRY_COMPARE(button->text(), QString("确定"));
        list->setCurrentIndex(model->index(m_root->filePath("folder")));
        QTRY_COMPARE(button->text(), QString("确定"));
        int answer = 0;
        DialogAnswers::instance().message = [&](const QString &, const QString &text, int) {
            return text.endsWith("\na.txt") ? answer : 2; // a folder would be named as one
        };
        for (; answer < 2; ++answer) {
            QVERIFY(QFile::exists(path));
            list->setCurrentIndex(model->index(path));
            for (QShortcut *shortcut : open.findChildren<QShortcut *>())
                if (shortcut->key() == QKeySequence(Qt::Key_Delete) && shortcut->parent() == list)
                    emit shortcut->activated();
        }
        QVERIFY(!QFile::exists(path));
    }

    void waitsUntilItMayBeCancelled()
    {
        QWidget window;
        window.setGeometry(150, 100, 501, 401);
        QtWaitDialog dialog("正在连接...", &window);
        dialog.show();
        QCOMPARE(dialog.geometry().center(), window.geometry().center());
        QCOMPARE(dialog.grab().toImage().pixelColor(0, 50), Skin::palette().outline);
        QVERIFY(dialog.findChild<WaitingSpinnerWidget *>()->isSpinning());
        QVERIFY(dialog.isModal());
        dialog.move(10, 20);
        dialog.hide();
        dialog.show(); // where the user has put it
        QCOMPARE(dialog.pos(), QPoint(10, 20));
        for (const bool cancelable : {false, true}) {
            dialog.setCancelable(cancelable);
            dialog.close();
            QCOMPARE(dialog.isVisible(), !cancelable);
        }
        QVERIFY(!dialog.findChild<WaitingSpinnerWidget *>()->isSpinning());
    }

    void colorPanelKeepsItsPartsTogether()
    {
        QtColorPanel panel;
        panel.resize(360, 340);
        panel.setStyleSheet("QLineEdit[kind=\"error\"] {color: #ff0000;}");
        panel.show();
        panel.setColor(QColor("#336699"));
        QVERIFY(!QtColorPanel().findChild<QLineEdit *>("hexField")->text().isEmpty());
        auto *hex = panel.findChild<QLineEdit *>("hexField");
        auto *field = panel.findChild<HueSaturationField *>();
        auto *value = panel.findChild<QSlider *>("valueSlider");
        QCOMPARE(hex->text(), QString("#336699"));
        hex->selectAll();
        QTest::keyClicks(hex, "#Zz12"); // letters that are no digits are refused
        QCOMPARE(panel.color(), QColor("#336699"));
        QCOMPARE(hex->palette().color(QPalette::Text), QColor(Qt::red));
        QTest::keyClicks(hex, "AbCd");
        QCOMPARE(panel.color(), QColor("#12abcd"));
        QVERIFY(hex->palette().color(QPalette::Text) != QColor(Qt::red));
        QCOMPARE(value->value(), 0xcd);
        // Down to black and up again: the hue is not lost.
        value->setValue(0);
        QCOMPARE(panel.color(), QColor(Qt::black));
        value->setValue(0xcd);
        QVERIFY(qAbs(panel.color().hue() - QColor("#12abcd").hue()) <= 1);
        QTest::mouseClick(field, Qt::LeftButton, {}, {1, 1}); // red, full saturation
        QCOMPARE(panel.color().saturation(), 255);
        QCOMPARE(panel.color().hue(), 0);
        QTest::keyClick(field, Qt::Key_Up); // no more than that
        QCOMPARE(panel.color().saturation(), 255);
        auto *swatches = panel.findChild<ColorSwatches *>("standardColors");
        QVERIFY(repaints(swatches, [swatches] { QTest::keyClick(swatches, Qt::Key_Right); }));
        for (const int i : {0, 16}) {
            QTest::mouseClick(swatches, Qt::LeftButton, {}, swatches->cell(i).center());
            QCOMPARE(panel.color(), swatches->colors().at(i));
        }
        const auto painted = [](QWidget *widget, const QPoint &place) {
            return widget->grab().toImage().pixelColor(place);
        };
        QCOMPARE(painted(swatches, swatches->cell(35).center()), swatches->colors().at(35));
        auto *recent = panel.findChild<ColorSwatches *>("recentColors");
        panel.setRecentColors({Qt::red, panel.color(), Qt::white});
        QCOMPARE(recent->accessibleName(), "颜色 " + panel.color().name());
        panel.setColor(Qt::red);
        QCOMPARE(recent->accessibleName(), QString("颜色 #ff0000"));
        QCOMPARE(field->hue(), 0);
        QCOMPARE(painted(panel.findChild<QLabel *>(), {20, 10}), QColor(Qt::red));
        QTest::mouseClick(recent, Qt::LeftButton, {}, recent->cell(2).center());
        QCOMPARE(swatches->accessibleName(), QString("颜色 #ffffff"));
    }

    void swatchesAndFieldFollowTheUser()
    {
        QWidget window;
        ColorSwatches swatches(3, 2, &window);
        swatches.setColors({Qt::red});
        QCOMPARE(swatches.accessibleName(), QString("颜色 #ff0000"));
        swatches.setColors({Qt::red, Qt::green, Qt::blue, Qt::white});
        swatches.setCurrentColor(Qt::green);
        const auto frames = [&, accent = QColor(Skin::palette().accent)] {
            const QImage image = swatches.grab().toImage();
            QString thick;
            for (int i = 0, rows = 0; i < 6; ++i, thick += QString::number(rows))
                for (rows = 0; image.pixelColor(swatches.cell(i).topLeft() + QPoint(11, rows)) == accent;)
                    ++rows;
            return thick;
        };
        QStringList seen{frames()}; // of the current color; that of the keyboard is thicker
        HueSaturationField field(&window);
        window.show();
        QApplication::setActiveWindow(&window);
        swatches.setFocus();
        for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Right, Qt::Key_Left, Qt::Key_Left, Qt::Key_Left,
                                  Qt::Key_Down, Qt::Key_Up, Qt::Key_Space, Qt::Key_Right}) {
            QTest::keyClick(&swatches, key);
            seen += frames();
        }
        swatches.setCurrentColor(Qt::red);
        QCOMPARE(seen.join(' ') + ' ' + frames(),
                 QString("020000 040000 024000 040000 420000 420000 020400 420000 400000 240000 400000"));

        field.resize(180, 120);
        field.setColor(100, 200);
        const QImage image = field.grab().toImage();
        QVERIFY(image.pixelColor(55, 26).saturation() < 90); // the mark around it
        seen = QStringList{image.pixelColor(0, 0).name(), image.pixelColor(90, 20).name()};
        QVERIFY(repaints(&field, [&field] { field.setColor(100, 200); }));
        connect(&field, &HueSaturationField::changed, this,
                [&](int hue, int saturation) { seen += QString("%1,%2").arg(hue).arg(saturation); });
        for (const Qt::Key key : {Qt::Key_Left, Qt::Key_Up, Qt::Key_Down, Qt::Key_Right})
            QTest::keyClick(&field, key, key == Qt::Key_Up ? Qt::ShiftModifier : Qt::NoModifier);
        for (const Qt::MouseButton button : {Qt::NoButton, Qt::LeftButton}) {
            QMouseEvent move(QEvent::MouseMove, {500, 118}, Qt::NoButton, button, {});
            QApplication::sendEvent(&field, &move);
        }
        QCOMPARE(seen.join(' '), Skin::palette().border + " #29ffff 99,200 99,210 99,209 100,209 359,0");
        seen.clear();
        field.setColor(0, 255);
        QTest::keyClick(&field, Qt::Key_Left);
        QTest::keyClick(&field, Qt::Key_Up);
        QCOMPARE(seen, (QStringList{"0,255", "0,255"}));
        QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
        QApplication::sendEvent(&field, &escape);
        QVERIFY(!escape.isAccepted()); // it is the dialog's
    }

    void styleDialogWarnsAndStores()
    {
        const Settings &settings = Settings::instance();
        for (const char *button : {"btnCancel", "btnOk"}) {
            QtStyleDialog dialog(QtStyleDialog::SendArea);
            whenModal([button](QWidget *modal) {
                auto *contrast = modal->findChild<QLabel *>("contrastLabel");
                QVERIFY(contrast->text().contains("7.8 : 1"));
                typeColor(modal, "textPanel", "#505050");
                QCOMPARE(contrast->property("kind").toString(), QString("error"));
                answer(modal, button);
            });
            const bool accepted = dialog.exec() == 1;
            QCOMPARE(settings.sendTextColor, QColor(accepted ? "#505050" : "#f2f2f2"));
            QCOMPARE(QFile::exists(AppPaths::configFile()), accepted);
        }
        Settings::load();
        QCOMPARE(settings.sendTextColor, QColor("#505050"));
        QCOMPARE(settings.recvTextColor, QColor("#f2f2f2"));
        for (int i = 0; i < 2; ++i) { // offers the colors of this run, each once
            QtStyleDialog next(QtStyleDialog::SendArea);
            auto *recent = next.findChild<ColorSwatches *>("recentColors");
            QCOMPARE(recent->colors(), (QVector<QColor>{settings.sendBackground, "#505050"}));
            for (const int cell : {2, 1}) { // the first of them is empty
                QHelpEvent help(QEvent::ToolTip, recent->cell(cell).center(), {});
                QApplication::sendEvent(recent, &help);
                QCOMPARE(QToolTip::text(), QString(cell == 1 ? "#505050" : ""));
            }
            next.accept();
        }
        Settings::instance().sendFollowsSkin.set(true);
        for (const auto area : {QtStyleDialog::SendArea, QtStyleDialog::ReceiveArea})
            QCOMPARE(QtStyleDialog(area).findChild<QAbstractButton *>("checkFollowSkin")->isChecked(),
                     area == QtStyleDialog::SendArea);
        Settings::instance().sendFollowsSkin.set(false);
        QtStyleDialog following(QtStyleDialog::SendArea);
        following.findChild<QAbstractButton *>("checkFollowSkin")->click();
        QVERIFY(!following.findChild<QTabWidget *>()->isEnabled());
        const auto *preview = following.findChild<QLabel *>("colorPreview");
        const QString look = "background-color: %1; color: %2;";
        QVERIFY(preview->styleSheet().startsWith(look.arg(Skin::palette().panel, Skin::palette().text)));
        following.findChild<QAbstractButton *>("btnDefaultColors")->click();
        QVERIFY(preview->styleSheet().startsWith(look.arg("#4b4b4b", "#f2f2f2")));
        QVERIFY(qAbs(Contrast::ratio(QColor("#767676"), Qt::white) - 4.54) < 0.005);
    }

private:
    QString touch(const QString &name)
    {
        return writeFile(m_root->filePath(name), "x") ? m_root->filePath(name) : QString();
    }

    std::unique_ptr<QTemporaryDir> m_root;
};

QTEST_MAIN(DialogsTest)
#include "test_dialogs.moc"
