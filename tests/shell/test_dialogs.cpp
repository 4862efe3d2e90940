// Message box, file dialog, wait dialog and style dialog, driven as a user
// would drive them.

#include "apppaths.h"
#include "colourswatches.h"
#include "contrast.h"
#include "dialoganswers.h"
#include "huesaturationfield.h"
#include "qtcolorpanel.h"
#include "qtfiledialog.h"
#include "qtmessagebox.h"
#include "qtstyledialog.h"
#include "qttitlebar.h"
#include "qtwaitdialog.h"
#include "settings.h"
#include "waitingspinnerwidget.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFile>
#include <QFileDialog>
#include <QFileSystemModel>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QRegularExpression>
#include <QSettings>
#include <QShortcut>
#include <QSignalSpy>
#include <QSlider>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

namespace {

// Runs `act` on the modal dialog that comes up next.
template <typename Act> void whenModal(Act act)
{
    QTimer::singleShot(0, qApp, [act] {
        QWidget *dialog = QApplication::activeModalWidget();
        QVERIFY(dialog);
        act(dialog);
    });
}

void clickButton(QWidget *dialog, const char *name)
{
    QTest::mouseClick(dialog->findChild<QPushButton *>(QLatin1String(name)), Qt::LeftButton);
}

// Types a name into the file dialog on display and accepts it.
void typeName(QWidget *dialog, const QString &name)
{
    auto *edit = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
    edit->setText(name);
    QTest::keyClick(edit, Qt::Key_Return);
}

void touch(const QString &path)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("x");
}

QString stored(const char *key)
{
    QSettings file(AppPaths::configFile(), QSettings::IniFormat);
    file.beginGroup("Common");
    return file.value(QLatin1String(key)).toString();
}

} // namespace

class DialogsTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_root.reset(new QTemporaryDir);
        AppPaths::setRoot(m_root->path());
        AppPaths::makeFolders();
        Settings::writeDefaults();
        Settings::load();
    }
    void cleanup() { DialogAnswers::instance() = {}; }

    void messageBoxAnswers()
    {
        const auto ask = [] {
            return QtMessageBox::question(nullptr, QStringLiteral("询问"), QStringLiteral("继续?"));
        };
        whenModal([](QWidget *box) {
            QCOMPARE(box->windowTitle(), QStringLiteral("询问"));
            QCOMPARE(box->findChild<QtTitleBar *>(QStringLiteral("msgBoxTitle"))->title(),
                     QStringLiteral("询问"));
            clickButton(box, "btnOk");
        });
        QCOMPARE(ask(), 1);
        whenModal([](QWidget *box) { clickButton(box, "btnCancel"); });
        QCOMPARE(ask(), 0);
        whenModal([](QWidget *box) { QTest::keyClick(box, Qt::Key_Return); });
        QCOMPARE(ask(), 1);
        whenModal([](QWidget *box) { QTest::keyClick(box, Qt::Key_Escape); });
        QCOMPARE(ask(), 0);
        whenModal([](QWidget *box) { box->close(); });
        QCOMPARE(ask(), 0);
        whenModal([](QWidget *box) {
            QVERIFY(!box->findChild<QPushButton *>(QStringLiteral("btnCancel"))->isVisible());
            QTest::keyClick(box, Qt::Key_Return);
        });
        QCOMPARE(QtMessageBox::warning(nullptr, QStringLiteral("告警"), QStringLiteral("没有数据")), 1);
    }

    void saveQuestionHasThreeAnswers()
    {
        const auto ask = [](const std::function<void(QWidget *)> &act) {
            whenModal(act);
            return QtMessageBox::saveQuestion(nullptr, QString(), QStringLiteral("保存?"));
        };
        QCOMPARE(ask([](QWidget *box) { clickButton(box, "btnOk"); }), QtMessageBox::Save);
        QCOMPARE(ask([](QWidget *box) { QTest::keyClick(box, Qt::Key_Return); }), QtMessageBox::Cancel);
        QCOMPARE(ask([](QWidget *box) { clickButton(box, "btnDiscard"); }), QtMessageBox::Discard);
        QCOMPARE(ask([](QWidget *box) { clickButton(box, "btnCancel"); }), QtMessageBox::Cancel);
        QCOMPARE(ask([](QWidget *box) { QTest::keyClick(box, Qt::Key_Escape); }), QtMessageBox::Cancel);
        QCOMPARE(ask([](QWidget *box) { box->close(); }), QtMessageBox::Cancel);
    }

    void messageBoxIcons()
    {
        // Type, side of the pixmap (0: no icon), colour.
        const struct
        {
            int type;
            int side;
            const char *colour;
        } looks[] = {{0, 50, "#34c388"}, {1, 50, "#f86934"}, {2, 50, "#f86934"}, {3, 50, "#34c388"},
                     {4, 60, "#34c388"}, {5, 60, "#f86934"}, {6, 0, ""},         {-1, 0, ""}};
        QtMessageBox box;
        for (const auto &look : looks) {
            box.setMessage(QString(), QStringLiteral("x"), look.type);
            QCOMPARE(box.title(), QStringLiteral("提示"));
            auto *icon = box.findChild<QLabel *>(QStringLiteral("msgBoxIcon"));
            QCOMPARE(icon->isVisibleTo(&box), look.side > 0);
            if (look.side == 0)
                continue;
            const QImage image = icon->pixmap(Qt::ReturnByValue).toImage();
            QCOMPARE(image.size(), QSize(look.side, look.side));
            int painted = 0;
            for (int y = 0; y < image.height(); ++y)
                for (int x = 0; x < image.width(); ++x)
                    painted += image.pixelColor(x, y) == QColor(look.colour);
            QVERIFY2(painted > 100, qPrintable(QString::number(look.type)));
        }
    }

    void longMessageWraps()
    {
        QtMessageBox box;
        box.setMessage(QString(), QStringLiteral("/a-folder-name-without-spaces").repeated(30),
                       QtMessageBox::Warning);
        box.show();
        QVERIFY(QTest::qWaitForWindowExposed(&box));
        QVERIFY(box.width() < 600);
        QVERIFY(box.height() > 150);
        auto *label = box.findChild<QLabel *>(QStringLiteral("msgBoxText"));
        QVERIFY(label->width() <= 400);
        label->setSelection(0, label->text().size());
        QTest::keySequence(label, QKeySequence::Copy);
        QTRY_COMPARE(QApplication::clipboard()->text(), box.text()); // without the places to break
        const int before = box.height();
        box.close();
        QtMessageBox huge;
        huge.setMessage(QString(), QStringLiteral("一行很长的文字 ").repeated(2000), QtMessageBox::Warning);
        huge.show();
        QVERIFY(huge.height() >= before);
        QVERIFY2(huge.height() < 500, qPrintable(QString::number(huge.height())));
        QVERIFY(huge.findChild<QPushButton *>(QStringLiteral("btnOk"))->geometry().bottom() < huge.height());
    }

    void answersStandIn()
    {
        DialogAnswers::instance().message = [](const QString &title, const QString &text, int type) {
            return title == QStringLiteral("询问") && text == QStringLiteral("a") && type == 1 ? 1 : 0;
        };
        QCOMPARE(QtMessageBox::question(nullptr, QStringLiteral("询问"), QStringLiteral("a")), 1);
        QCOMPARE(QtMessageBox::warning(nullptr, QStringLiteral("询问"), QStringLiteral("a")), 0);
        DialogAnswers::instance().fileNames = [](DialogAnswers::FileMode mode, const QString &,
                                                 const QString &, const QString &) {
            return mode == DialogAnswers::FileMode::OpenMany
                       ? QStringList{QStringLiteral("/a"), QStringLiteral("/b")}
                       : QStringList();
        };
        QCOMPARE(QtFileDialog::getOpenFileNames().size(), 2);
        QVERIFY(QtFileDialog::getOpenFileName().isEmpty());
        QVERIFY(QtFileDialog::getSaveFileName().isEmpty());
    }

    void fileDialogTexts()
    {
        QtFileDialog open(QtFileDialog::OpenFile, QString(), m_root->path(), QStringLiteral("所有文件(*.*)"));
        QCOMPARE(open.title(), QStringLiteral("文件选择框"));
        auto *inner = open.findChild<QFileDialog *>();
        QCOMPARE(inner->labelText(QFileDialog::LookIn), QStringLiteral("文件目录："));
        QCOMPARE(inner->labelText(QFileDialog::Accept), QStringLiteral("确定"));
        QCOMPARE(inner->labelText(QFileDialog::Reject), QStringLiteral("取消"));
        for (const auto *name :
             {"lookInLabel", "fileTypeCombo", "lookInCombo", "fileNameEdit", "buttonBox", "listView"})
            QVERIFY2(inner->findChild<QWidget *>(QLatin1String(name)), name);
        QtFileDialog save(QtFileDialog::SaveFile, QStringLiteral("保存数据"), m_root->path(), QString());
        QCOMPARE(save.title(), QStringLiteral("保存数据"));
        QCOMPARE(save.findChild<QFileDialog *>()->labelText(QFileDialog::Accept), QStringLiteral("保存"));
    }

    void fileDialogCancelled()
    {
        touch(m_root->filePath(QStringLiteral("a.txt")));
        whenModal(
            [](QWidget *dialog) { QTest::keyClick(dialog->findChild<QFileDialog *>(), Qt::Key_Escape); });
        QVERIFY(
            QtFileDialog::getOpenFileName(nullptr, {}, m_root->filePath(QStringLiteral("a.txt"))).isEmpty());
        whenModal([](QWidget *dialog) { dialog->close(); });
        QVERIFY(QtFileDialog::getOpenFileNames(nullptr, {}, m_root->path()).isEmpty());
        whenModal([](QWidget *dialog) {
            const auto buttons = dialog->findChildren<QPushButton *>();
            for (QPushButton *button : buttons)
                if (button->text() == QStringLiteral("取消"))
                    button->click();
        });
        QVERIFY(
            QtFileDialog::getSaveFileName(nullptr, {}, m_root->filePath(QStringLiteral("b.txt"))).isEmpty());
    }

    void fileDialogOpens()
    {
        const QString path = m_root->filePath(QStringLiteral("数据.txt"));
        touch(path);
        whenModal([](QWidget *dialog) { typeName(dialog, QStringLiteral("数据.txt")); });
        QCOMPARE(QtFileDialog::getOpenFileName(nullptr, {}, m_root->path()), path);
        // The folder is remembered; a name that does not exist is refused.
        whenModal([](QWidget *dialog) {
            DialogAnswers::instance().message = [](const QString &title, const QString &, int) {
                return title == QStringLiteral("告警") ? 1 : 0;
            };
            typeName(dialog, QStringLiteral("没有.txt"));
            QVERIFY(dialog->isVisible());
            typeName(dialog, QStringLiteral("数据.txt"));
        });
        QCOMPARE(QtFileDialog::getOpenFileName(), path);
    }

    void fileDialogSaves()
    {
        const QString filters = QStringLiteral("文本文件(*.txt);;数据文件(*.bin);;所有文件(*.*)");
        QString chosen = QStringLiteral("数据文件(*.bin)");
        whenModal([](QWidget *dialog) { typeName(dialog, QStringLiteral("out")); });
        QCOMPARE(QtFileDialog::getSaveFileName(nullptr, {}, m_root->path(), filters, &chosen),
                 m_root->filePath(QStringLiteral("out.bin")));
        QCOMPARE(chosen, QStringLiteral("数据文件(*.bin)"));
        whenModal([](QWidget *dialog) { typeName(dialog, QStringLiteral("out.log")); });
        QCOMPARE(QtFileDialog::getSaveFileName(nullptr, {}, m_root->path(), filters),
                 m_root->filePath(QStringLiteral("out.log")));
        chosen = QStringLiteral("所有文件(*.*)");
        whenModal([](QWidget *dialog) { typeName(dialog, QStringLiteral("plain")); });
        QCOMPARE(QtFileDialog::getSaveFileName(nullptr, {}, m_root->path(), filters, &chosen),
                 m_root->filePath(QStringLiteral("plain")));
        QCOMPARE(QtFileDialog::suffixOf(QStringLiteral("图片 (*.png *.jpg)")), QStringLiteral("png"));

        // An existing file (found through the added suffix) is asked about.
        touch(m_root->filePath(QStringLiteral("old.txt")));
        int asked = 0;
        whenModal([&asked](QWidget *dialog) {
            DialogAnswers::instance().message = [&asked](const QString &, const QString &text, int) {
                return text.contains(QStringLiteral("old.txt")) && ++asked == 2 ? 1 : 0;
            };
            typeName(dialog, QStringLiteral("old"));
            QVERIFY(dialog->isVisible()); // first answer: no
            typeName(dialog, QStringLiteral("old"));
        });
        QCOMPARE(QtFileDialog::getSaveFileName(nullptr, {}, m_root->path(), filters),
                 m_root->filePath(QStringLiteral("old.txt")));
        QCOMPARE(asked, 2);
    }

    void fileDialogShowsAllFiles()
    {
        touch(m_root->filePath(QStringLiteral("Makefile")));
        touch(m_root->filePath(QStringLiteral("a.bin")));
        QString chosen = QStringLiteral("所有文件(*.*)");
        whenModal([](QWidget *dialog) {
            auto *model = dialog->findChild<QFileSystemModel *>();
            const auto *combo = dialog->findChild<QComboBox *>(QStringLiteral("fileTypeCombo"));
            QCOMPARE(combo->currentText(), QStringLiteral("所有文件(*.*)"));
            const auto shows = [model](const QString &name) {
                const QModelIndex folder = model->index(model->rootPath());
                for (int row = 0; row < model->rowCount(folder); ++row)
                    if (model->fileName(model->index(row, 0, folder)) == name)
                        return true;
                return false;
            };
            QTRY_VERIFY(shows(QStringLiteral("a.bin")));
            QTRY_VERIFY(shows(QStringLiteral("Makefile")));
            dialog->close();
        });
        QtFileDialog::getOpenFileName(nullptr, {}, m_root->path(),
                                      QStringLiteral("数据文件(*.bin);;所有文件(*.*)"), &chosen);
    }

    void fileDialogProposesAName()
    {
        QtFileDialog save(QtFileDialog::SaveFile, QString(), m_root->path(),
                          QStringLiteral("文本文件(*.txt)"));
        auto *name = save.findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
        QVERIFY2(name->text().contains(QRegularExpression(QStringLiteral("^数据_\\d{8}_\\d{6}\\.txt$"))),
                 qPrintable(name->text()));
        QString chosen = QStringLiteral("数据文件(*.bin)");
        whenModal([](QWidget *dialog) {
            auto *field = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
            QVERIFY2(field->text().endsWith(QStringLiteral(".bin")), qPrintable(field->text()));
            dialog->close();
        });
        QtFileDialog::getSaveFileName(nullptr, {}, {}, QStringLiteral("文本文件(*.txt);;数据文件(*.bin)"),
                                      &chosen);
        // Qt takes the button for one that opens folders.
        QVERIFY(QDir(m_root->path()).mkdir(QStringLiteral("folder")));
        save.show();
        auto *button = save.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Save);
        typeName(&save, QStringLiteral("folder"));
        QTRY_COMPARE(save.findChild<QFileDialog *>()->directory().dirName(), QStringLiteral("folder"));
        QTRY_COMPARE(button->text(), QStringLiteral("保存"));
        QVERIFY(save.isVisible() && name->text().startsWith(QStringLiteral("数据_")));
    }

    void fileDialogAsksBeforeItDeletes()
    {
        const QString path = m_root->filePath(QStringLiteral("a.txt"));
        touch(path);
        QtFileDialog open(QtFileDialog::OpenFile, QString(), path, QString());
        open.show();
        auto *list = open.findChild<QListView *>(QStringLiteral("listView"));
        auto *model = open.findChild<QFileSystemModel *>();
        QTRY_VERIFY(model->index(path).isValid());
        int answer = 0;
        QStringList asked;
        DialogAnswers::instance().message = [&](const QString &, const QString &text, int) {
            asked.append(text);
            return answer;
        };
        for (; answer < 2; ++answer) {
            QVERIFY(QFile::exists(path));
            list->setCurrentIndex(model->index(path));
            for (QShortcut *shortcut : open.findChildren<QShortcut *>())
                if (shortcut->key() == QKeySequence(Qt::Key_Delete) && shortcut->parent() == list)
                    emit shortcut->activated();
        }
        QCOMPARE(asked.size(), 2);
        QVERIFY(asked.first().contains(QStringLiteral("a.txt")));
        QVERIFY(!QFile::exists(path));
    }

    void waitDialog()
    {
        QtWaitDialog dialog(QStringLiteral("正在连接..."));
        dialog.show();
        QVERIFY(dialog.findChild<WaitingSpinnerWidget *>()->isSpinning());
        QTest::keyClick(&dialog, Qt::Key_Escape);
        dialog.close();
        QVERIFY(dialog.isVisible());
        dialog.setCancelable(true);
        QSignalSpy rejected(&dialog, &QDialog::rejected);
        QTest::keyClick(&dialog, Qt::Key_Escape);
        QCOMPARE(rejected.count(), 1);
        QVERIFY(!dialog.isVisible());
        QVERIFY(!dialog.findChild<WaitingSpinnerWidget *>()->isSpinning());
    }

    void colourPanelKeepsItsPartsTogether()
    {
        QtColorPanel panel;
        panel.resize(360, 340);
        panel.show();
        panel.setColour(QColor("#336699"));
        auto *hex = panel.findChild<QLineEdit *>(QStringLiteral("hexField"));
        auto *field = panel.findChild<HueSaturationField *>();
        auto *value = panel.findChild<QSlider *>(QStringLiteral("valueSlider"));
        QCOMPARE(hex->text(), QStringLiteral("#336699"));
        QCOMPARE(field->hue(), QColor("#336699").hue());
        QCOMPARE(value->value(), 0x99);

        QSignalSpy spy(&panel, &QtColorPanel::colourChanged);
        hex->selectAll();
        QTest::keyClicks(hex, QStringLiteral("#Zz12")); // letters that are no digits are refused
        QVERIFY(!panel.isHexValid());
        QCOMPARE(panel.colour(), QColor("#336699"));
        QCOMPARE(hex->property("kind").toString(), QStringLiteral("error"));
        QTest::keyClicks(hex, QStringLiteral("AbCd"));
        QVERIFY(panel.isHexValid());
        QCOMPARE(panel.colour(), QColor("#12abcd"));
        QVERIFY(hex->property("kind").toString().isEmpty());
        QCOMPARE(value->value(), 0xcd);

        // Down to black and up again: the hue is not lost.
        value->setValue(0);
        QCOMPARE(panel.colour(), QColor(Qt::black));
        value->setValue(0xcd);
        QVERIFY(qAbs(panel.colour().hue() - QColor("#12abcd").hue()) <= 1);

        QTest::keyClick(field, Qt::Key_Up);
        QTest::keyClick(field, Qt::Key_Right, Qt::ShiftModifier);
        QCOMPARE(hex->text(), panel.colour().name());
        QTest::mouseClick(field, Qt::LeftButton, {}, {1, 1}); // red, full saturation
        QCOMPARE(panel.colour().hue(), 0);
        QCOMPARE(panel.colour().saturation(), 255);

        auto *swatches = panel.findChild<ColourSwatches *>(QStringLiteral("standardColours"));
        QTest::mouseClick(swatches, Qt::LeftButton, {}, swatches->cell(3).center());
        QCOMPARE(panel.colour(), swatches->colours().at(3));
        QTest::keyClick(swatches, Qt::Key_Right);
        QTest::keyClick(swatches, Qt::Key_Down);
        QTest::keyClick(swatches, Qt::Key_Space);
        QCOMPARE(panel.colour(), swatches->colours().at(16));
        QVERIFY(spy.count() > 5);
    }

    void styleDialogCancelChangesNothing()
    {
        QFile file(AppPaths::configFile());
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray before = file.readAll();
        file.close();
        QtStyleDialog dialog(QtStyleDialog::ReceiveArea);
        whenModal([](QWidget *modal) {
            modal->findChild<QtColorPanel *>(QStringLiteral("backgroundPanel"))
                ->findChild<QLineEdit *>(QStringLiteral("hexField"))
                ->selectAll();
            QTest::keyClicks(modal->findChild<QtColorPanel *>(QStringLiteral("backgroundPanel"))
                                 ->findChild<QLineEdit *>(QStringLiteral("hexField")),
                             QStringLiteral("#101010"));
            QTest::keyClick(modal, Qt::Key_Escape);
        });
        QCOMPARE(dialog.exec(), 0);
        QCOMPARE(dialog.background(), QColor("#101010"));
        QCOMPARE(Settings::instance().recvBackground, QColor("#4b4b4b"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), before);
    }

    void styleDialogAccepted()
    {
        QtStyleDialog dialog(QtStyleDialog::SendArea);
        whenModal([](QWidget *modal) {
            auto *contrast = modal->findChild<QLabel *>(QStringLiteral("contrastLabel"));
            QVERIFY(contrast->text().contains(QStringLiteral("7.8 : 1")));
            auto *text = modal->findChild<QtColorPanel *>(QStringLiteral("textPanel"));
            auto *hex = text->findChild<QLineEdit *>(QStringLiteral("hexField"));
            hex->selectAll();
            QTest::keyClicks(hex, QStringLiteral("#505050"));
            QCOMPARE(contrast->property("kind").toString(), QStringLiteral("error"));
            clickButton(modal, "btnOk");
        });
        QCOMPARE(dialog.exec(), 1);
        QCOMPARE(Settings::instance().sendTextColor, QColor("#505050"));
        QCOMPARE(stored("SendTextColor"), QStringLiteral("#505050"));
        QCOMPARE(stored("SendBackground"), QStringLiteral("#4b4b4b"));
        QCOMPARE(stored("RecvTextColor"), QStringLiteral("#f2f2f2"));
        // The next dialog of this run offers the colour.
        QtStyleDialog next(QtStyleDialog::ReceiveArea);
        QVERIFY(next.findChild<ColourSwatches *>(QStringLiteral("recentColours"))
                    ->colours()
                    .contains(QColor("#505050")));
    }

    void contrastFigures()
    {
        QVERIFY(qAbs(Contrast::ratio(Qt::black, Qt::white) - 21.0) < 0.001);
        QVERIFY(qAbs(Contrast::ratio(QColor("#767676"), Qt::white) - 4.54) < 0.005);
        QCOMPARE(Contrast::ratio(Qt::red, Qt::red), 1.0);
    }

private:
    std::unique_ptr<QTemporaryDir> m_root;
};

QTEST_MAIN(DialogsTest)
#include "test_dialogs.moc"
